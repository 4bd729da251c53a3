// Callbacks handed to a main loop that the application has already.

#include <ZOR/ZorSuite.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <queue>
#include <utility>

#include "Finder.h"

namespace {

/// A main loop as toolkits have one, in short.
class MainLoop {
 public:
  void post(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    tasks_.push(std::move(task));
    arrived_.notify_one();
  }

  /// Runs the next task. Returns false when none came until `end`.
  bool runOne(std::chrono::steady_clock::time_point end) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_until(lock, end, [this] { return !tasks_.empty(); })) return false;
    const std::function<void()> task = std::move(tasks_.front());
    tasks_.pop();
    lock.unlock();
    task();
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::queue<std::function<void()>> tasks_;
};

}  // namespace

int main(int argumentCount, char** arguments) {
  const int seconds = secondsOf(argumentCount, arguments);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  const auto loop = std::make_shared<MainLoop>();  // Shared with the library, whose workers may run on.
  ZorSetMainQueue([loop](std::function<void()> closure) { loop->post(std::move(closure)); });
  const auto finder = std::make_shared<Finder>();
  ZorSuite suite;
  suite.setDelegate(finder);
  suite.SmartConfigOnlineListen(kZorAnnouncementPort);
  suite.SmartConfigV5_Start(arguments[1], arguments[2], seconds * 1000);
  while (!finder->found && loop->runOne(end)) continue;
  suite.SmartConfigStop();
  return finder->found ? 0 : 1;
}
