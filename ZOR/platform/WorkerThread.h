#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>

#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/WakeDescriptor.h"

namespace zor {

/// Why a worker was asked to end.
enum class CancelReason : std::uint8_t {
  none,      ///< It was not.
  stopped,   ///< The application asked.
  replaced,  ///< A start of its kind takes its place.
  timedOut,  ///< The run that it serves has reached its time-out.
};

/// A thread with cooperative cancellation and drift-free, interruptible waits.
///
/// 1. `cancel` never ends the thread by itself: the body asks `cancelled` and returns.
/// 2. A cancel ends a wait at once, and every later `wait` returns at once.
/// 3. Waits are anchored to each other: each lasts until the previous deadline plus its own length,
///    so the time that the body spends between waits does not add up. A body that is late by a
///    whole wait starts a new count instead of catching up in a burst.
/// 4. A wait costs one wake-up of the thread, however long it is.
///
/// The object outlives its thread when the body holds a shared reference to it.
class WorkerThread {
 public:
  WorkerThread();
  ~WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  /// Runs `body` on a new thread on which all signals but those of its own faults are blocked, so that the
  /// application's handlers do not run there. Debuggers and crash reports show the thread as `name`, a
  /// literal of at most 15 characters. Returns false when the system gives no thread; `body` is destroyed
  /// then, and has not run. Call it once.
  [[nodiscard]] bool start(const char* name, std::function<void()> body);

  /// Asks the body to end. The first reason stays. Any thread, any number of times, before the start as well.
  void cancel(CancelReason reason) ZOR_EXCLUDES(mutex_);

  /// True once `cancel` was called. Any thread.
  bool cancelled() const { return cancelReason() != CancelReason::none; }

  /// The reason of the first `cancel`. Any thread.
  CancelReason cancelReason() const { return reason_.load(std::memory_order_acquire); }

  /// Makes every worker thread of the process that waits look at its tunables again. Any thread.
  static void wakeAll();

  /// Waits for as many milliseconds as `interval` holds, 0 or less for none. The value is read
  /// again after each `wakeAll`, so a change counts from the beginning of this wait. Worker's thread.
  void wait(const std::atomic<std::int32_t>& interval) ZOR_EXCLUDES(mutex_);

  /// The same with a length that nothing changes. Worker's thread.
  void wait(std::int32_t milliseconds) ZOR_EXCLUDES(mutex_);

  /// Opens the descriptor by which `cancel` and `wakeAll` cut `waitReadable` short. Before the start.
  void openWakeDescriptor() ZOR_EXCLUDES(mutex_);

  /// Closes it, if it is open. Worker's thread at its end, or whoever could not start it.
  void closeWakeDescriptor() ZOR_EXCLUDES(mutex_);

  /// Waits until `descriptor` has something to receive or has failed, until `milliseconds` have passed (less
  /// than 0: no limit), or until a `cancel` or `wakeAll` for which no earlier call has returned. Returns true
  /// in the first case. A negative descriptor never has anything. If the system gave no descriptor to be
  /// woken with, the wait lasts 10 ms at most. A call that finds a failure rests for 10 ms, so that a failure
  /// which stays does not make the worker spin. Worker's thread.
  bool waitReadable(std::int32_t descriptor, std::int32_t milliseconds) ZOR_EXCLUDES(mutex_);

 private:
  using Instant = ConditionVariable::Instant;

  void wake() ZOR_EXCLUDES(mutex_);

  // Its place in the list of all worker threads, guarded by the list's mutex.
  WorkerThread* previous_ = nullptr;
  WorkerThread* next_ = nullptr;

  Mutex mutex_;
  ConditionVariable condition_;
  WakeDescriptor wake_ ZOR_GUARDED_BY(mutex_);
  std::int32_t wakeEnd_ = -1;  ///< What `wake_` is waited for with; the worker's thread's own.
  std::atomic<CancelReason> reason_{CancelReason::none};
  Instant anchor_{};  ///< Deadline of the latest wait; set by the start, then the worker's thread's own.
};

}  // namespace zor
