#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>

#include "ZOR/platform/Mutex.h"

namespace zor {

/// A thread with cooperative cancellation and drift-free, interruptible waits.
///
/// 1. `cancel` never ends the thread by itself: the body asks `cancelled` and returns.
/// 2. A cancel ends a wait at once, and every later wait returns at once.
/// 3. Waits are anchored to each other: each lasts until the previous deadline plus its own length,
///    so the time that the body spends between waits does not add up. A body that is late by a
///    whole wait starts a new count instead of catching up in a burst.
/// 4. A wait costs one wake-up of the thread, however long it is.
///
/// The object outlives its thread when the body holds a shared reference to it.
class WorkerThread {
 public:
  WorkerThread() = default;
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  /// Runs `body` on a new thread on which all signals but those of its own faults are blocked, so
  /// that the application's handlers do not run there. Returns false when the system gives no thread;
  /// `body` is destroyed then, and has not run. Call it once.
  [[nodiscard]] bool start(std::function<void()> body);

  /// Asks the body to end. Any thread, any number of times, before the start as well.
  void cancel() ZOR_EXCLUDES(mutex_);

  /// True once `cancel` was called. Any thread.
  bool cancelled() const { return cancelled_.load(std::memory_order_acquire); }

  /// Makes a waiting thread read its interval again. Any thread.
  void wake() ZOR_EXCLUDES(mutex_);

  /// Waits for as many milliseconds as `interval` holds, 0 or less for none. The value is read
  /// again after each `wake`, so a change counts from the beginning of this wait. Worker's thread.
  void wait(const std::atomic<std::int32_t>& interval) ZOR_EXCLUDES(mutex_);

  /// The same with a length that nobody changes. Worker's thread.
  void wait(std::int32_t milliseconds) ZOR_EXCLUDES(mutex_);

 private:
  using Instant = ConditionVariable::Instant;

  Mutex mutex_;
  ConditionVariable condition_;
  std::atomic<bool> cancelled_{false};
  Instant anchor_{};  ///< Deadline of the latest wait; set by the start, then the worker's thread's own.
};

}  // namespace zor
