#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "ZOR/platform/MonotonicWait.h"
#include "ZOR/platform/ThreadAnnotations.h"

namespace zor {

class ConditionVariable;

/// `std::mutex` that the thread-safety analysis can follow.
class ZOR_CAPABILITY("mutex") Mutex {
 public:
  constexpr Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() ZOR_ACQUIRE() { mutex_.lock(); }
  void unlock() ZOR_RELEASE() { mutex_.unlock(); }

 private:
  friend class ConditionVariable;
  std::mutex mutex_;
};

/// Holds a mutex for the length of a scope.
class ZOR_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ZOR_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() ZOR_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

/// `std::condition_variable` over `Mutex`. Waits may end early; callers loop on their condition.
class ConditionVariable {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  void wait(Mutex& mutex) ZOR_REQUIRES(mutex) {
    LentLock lent(mutex);
    condition_.wait(lent.lock);
  }

  /// The deadline is the monotonic clock's, and steps of the wall clock do not move it.
  void waitUntil(Mutex& mutex, Instant deadline) ZOR_REQUIRES(mutex) {
    LentLock lent(mutex);
    waitByMonotonicClock(condition_, lent.lock, deadline);
  }

  void notifyAll() { condition_.notify_all(); }

 private:
  /// The caller's hold on a mutex, lent to a wait. However the wait ends, by unwinding too, the mutex is then
  /// locked and the caller's to unlock.
  struct LentLock {
    explicit LentLock(Mutex& mutex) : lock(mutex.mutex_, std::adopt_lock) {}
    ~LentLock() { lock.release(); }
    LentLock(const LentLock&) = delete;
    LentLock& operator=(const LentLock&) = delete;

    std::unique_lock<std::mutex> lock;
  };

  std::condition_variable condition_;
};

}  // namespace zor
