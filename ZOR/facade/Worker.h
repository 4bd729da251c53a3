#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <utility>

#include "ZOR/facade/WorkerHandle.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/WorkerThread.h"
#include "ZOR/state/Reports.h"

namespace zor {

/// What the workers of one kind have in common.
struct WorkerKind {
  const char* threadName;              ///< At most 15 characters.
  bool receives;                       ///< Its body uses `WorkerThread::waitReadable`.
  std::atomic<ZorWorkerState>& state;  ///< Of its report; the body sets how it ended.
};

/// One running worker: a function on a thread of its own, and the end that others wait for.
class Worker {
 public:
  /// What a worker does. It asks the thread whether it is cancelled, and waits with it.
  using Body = std::function<void(WorkerThread& thread)>;

  /// Runs `body` on a new thread, as `WorkerThread::start` does. Once it has returned and been destroyed,
  /// with all that it captured, the thread empties `handle`, which is empty before. Returns false, with
  /// `handle` still empty and `body` destroyed, when the system gives no thread or memory. Application's
  /// thread.
  template <class Function>
  [[nodiscard]] static bool start(ZorWorkerHandle& handle, const WorkerKind& kind, Function&& body) noexcept {
    try {
      return run(handle, kind, std::forward<Function>(body));
    } catch (const std::exception&) {
      return false;
    }
  }

  explicit Worker(Body body) : body_(std::move(body)) {}

  WorkerThread& thread() { return thread_; }

  /// Releases whoever is in `waitForEnd`, now and later.
  void announceEnd() ZOR_EXCLUDES(mutex_);

  /// Waits, without limit, until the worker has emptied its handle.
  void waitForEnd() ZOR_EXCLUDES(mutex_);

 private:
  struct Ending;

  static bool run(ZorWorkerHandle& handle, const WorkerKind& kind, Body body);

  WorkerThread thread_;
  Body body_;  ///< The worker's thread's own once it runs.
  Mutex mutex_;
  ConditionVariable condition_;
  bool ended_ ZOR_GUARDED_BY(mutex_) = false;
};

}  // namespace zor
