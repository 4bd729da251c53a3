#include "ZOR/platform/MainQueue.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <new>
#include <utility>

#include "ZOR/platform/DropExceptions.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/PostReport.h"
#include "ZOR/platform/WakeDescriptor.h"

namespace zor {
namespace {

/// The places of one kind of closure. A closure has one from its post until it starts to run or is dropped.
class Places {
 public:
  /// Returns false when all are taken.
  bool take() {
    if (taken_.fetch_add(1) < kPlaces) return true;
    taken_.fetch_sub(1);
    return false;
  }
  bool anyFree() const { return taken_ < kPlaces; }
  void giveBack() { taken_.fetch_sub(1); }

 private:
  static constexpr std::int32_t kPlaces = 1024;
  std::atomic<std::int32_t> taken_{0};
};

constinit Places reportPlaces;
constinit Places applicationPlaces;

/// One posted closure, which runs at most once, in its place.
class PostedClosure {
 public:
  /// Returns null when there is no place or no memory.
  static std::shared_ptr<PostedClosure> make(Places& places, std::function<void()> closure) {
    if (!places.take()) return nullptr;
    try {
      return std::make_shared<PostedClosure>(places, std::move(closure));
    } catch (const std::bad_alloc&) {
      places.giveBack();
      return nullptr;
    }
  }

  /// Takes over a place that was taken for it.
  PostedClosure(Places& places, std::function<void()> closure) noexcept
      : places_(places), closure_(std::move(closure)) {}
  ~PostedClosure() { deliver(); }
  PostedClosure(const PostedClosure&) = delete;
  PostedClosure& operator=(const PostedClosure&) = delete;

  void run() {
    if (!deliver()) return;
    callAndDropExceptions(closure_);
    closure_ = nullptr;
  }

 private:
  /// Returns true for the first caller only.
  bool deliver() {
    if (delivered_.exchange(true)) return false;
    places_.giveBack();
    return true;
  }

  Places& places_;
  std::function<void()> closure_;
  std::atomic<bool> delivered_{false};
};

class MainQueue {
 public:
  void setPost(std::shared_ptr<const ZorMainQueuePost> post) ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    post_.swap(post);
  }

  bool post(Places& places, std::function<void()> closure) ZOR_EXCLUDES(mutex_) {
    std::shared_ptr<PostedClosure> posted = PostedClosure::make(places, std::move(closure));
    if (!posted) return false;
    if (const std::shared_ptr<const ZorMainQueuePost> post = applicationPost()) {
      (*post)([posted] { posted->run(); });
      return true;
    }
    const MutexLock lock(mutex_);
    waiting_.push_back(std::move(posted));
    readable_.raise();
    arrived_.notifyAll();
    return true;
  }

  std::int32_t run(std::int32_t waitMs) ZOR_EXCLUDES(mutex_) {
    std::int32_t count = 0;
    for (std::size_t left = waitForWork(waitMs); left > 0; --left) {
      const std::shared_ptr<PostedClosure> posted = takeFirst();
      if (!posted) break;
      posted->run();
      ++count;
    }
    return count;
  }

  std::int32_t descriptor() ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    const std::int32_t descriptor = readable_.descriptor();
    if (!waiting_.empty()) readable_.raise();
    return descriptor;
  }

 private:
  std::shared_ptr<const ZorMainQueuePost> applicationPost() ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return post_;
  }

  /// Returns how many closures wait once there are any or the time is over.
  std::size_t waitForWork(std::int32_t waitMs) ZOR_EXCLUDES(mutex_) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(waitMs);
    const MutexLock lock(mutex_);
    while (waiting_.empty() && std::chrono::steady_clock::now() < deadline) {
      arrived_.waitUntil(mutex_, deadline);
    }
    return waiting_.size();
  }

  /// Null when another call, made by a closure, has emptied the queue meanwhile.
  std::shared_ptr<PostedClosure> takeFirst() ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    if (waiting_.empty()) return nullptr;
    std::shared_ptr<PostedClosure> first = std::move(waiting_.front());
    waiting_.pop_front();
    if (waiting_.empty()) readable_.lower();
    return first;
  }

  Mutex mutex_;
  ConditionVariable arrived_;
  std::deque<std::shared_ptr<PostedClosure>> waiting_ ZOR_GUARDED_BY(mutex_);
  std::shared_ptr<const ZorMainQueuePost> post_ ZOR_GUARDED_BY(mutex_);
  WakeDescriptor readable_ ZOR_GUARDED_BY(mutex_);
};

/// Made at first use and never destroyed, because workers post to it until the process is gone.
/// Null when there is no memory for it; a later call tries again.
MainQueue* mainQueue() {
  try {
    static MainQueue& queue = *new MainQueue;
    return &queue;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

/// Returns false when the closure was dropped.
bool post(Places& places, std::function<void()> closure) {
  MainQueue* const queue = mainQueue();
  bool posted = false;
  callAndDropExceptions([&] { posted = queue != nullptr && queue->post(places, std::move(closure)); });
  return posted;
}

}  // namespace

bool postReport(std::function<void()> report) {
  return post(reportPlaces, std::move(report));
}

bool hasPlaceForReport() {
  return reportPlaces.anyFree();
}

}  // namespace zor

void ZorSetMainQueue(ZorMainQueuePost post) {
  zor::MainQueue* const queue = zor::mainQueue();
  try {
    if (queue != nullptr) {
      queue->setPost(post ? std::make_shared<const ZorMainQueuePost>(std::move(post)) : nullptr);
    }
  } catch (const std::bad_alloc&) {
    // Without memory the present queue stays.
  }
}

std::int32_t ZorRunMainQueue(std::int32_t waitMs) {
  zor::MainQueue* const queue = zor::mainQueue();
  return queue != nullptr ? queue->run(waitMs) : 0;
}

std::int32_t ZorMainQueueDescriptor() {
  zor::MainQueue* const queue = zor::mainQueue();
  return queue != nullptr ? queue->descriptor() : -1;
}

bool ZorPostToMainQueue(std::function<void()> closure) {
  return zor::post(zor::applicationPlaces, std::move(closure));
}
