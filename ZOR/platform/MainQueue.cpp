#include "ZOR/platform/MainQueue.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <new>
#include <utility>

#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/WakeDescriptor.h"

namespace zor {
namespace {

constexpr std::int32_t kMostUndelivered = 1024;

/// Closures that were posted and have neither run nor been dropped.
std::atomic<std::int32_t> undelivered{0};

/// One posted closure: it runs at most once, and counts as undelivered until it begins to run or is gone.
class PostedClosure {
 public:
  /// Null when as many closures as may wait do so already.
  static std::shared_ptr<PostedClosure> make(std::function<void()> closure) {
    if (undelivered.fetch_add(1) >= kMostUndelivered) {
      undelivered.fetch_sub(1);
      return nullptr;
    }
    try {
      return std::make_shared<PostedClosure>(std::move(closure));
    } catch (...) {
      undelivered.fetch_sub(1);
      throw;
    }
  }

  explicit PostedClosure(std::function<void()> closure) noexcept : closure_(std::move(closure)) {}
  ~PostedClosure() { deliver(); }
  PostedClosure(const PostedClosure&) = delete;
  PostedClosure& operator=(const PostedClosure&) = delete;

  void run() {
    if (!deliver()) return;
    try {
      closure_();
    } catch (...) {
      // The application's failure stays the application's; the closures behind still run.
    }
    closure_ = nullptr;
  }

 private:
  /// True for the first caller alone.
  bool deliver() {
    if (delivered_.exchange(true)) return false;
    undelivered.fetch_sub(1);
    return true;
  }

  std::function<void()> closure_;
  std::atomic<bool> delivered_{false};
};

class MainQueue {
 public:
  void setPost(std::shared_ptr<const ZorMainQueuePost> post) ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    post_.swap(post);
  }

  bool post(std::function<void()> closure) ZOR_EXCLUDES(mutex_) {
    std::shared_ptr<PostedClosure> posted = PostedClosure::make(std::move(closure));
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

}  // namespace
}  // namespace zor

void ZorSetMainQueue(ZorMainQueuePost post) {
  zor::MainQueue* const queue = zor::mainQueue();
  try {
    if (queue != nullptr) {
      queue->setPost(post ? std::make_shared<const ZorMainQueuePost>(std::move(post)) : nullptr);
    }
  } catch (...) {
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
  zor::MainQueue* const queue = zor::mainQueue();
  try {
    return queue != nullptr && queue->post(std::move(closure));
  } catch (...) {
    return false;
  }
}
