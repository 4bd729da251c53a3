#pragma once

#include <memory>

#include "ZOR/facade/DelegateSlot.h"
#include "ZOR/facade/RunInputs.h"
#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/facade/WorkerHandle.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/WorkerThread.h"

namespace zor {

/// One running worker: its thread, its inputs and the suite on which its entry runs.
class Worker {
 public:
  using Entry = void (ZorSuite::*)();

  /// Runs `entry` on a new thread that empties `handle` when the entry has returned. `handle` is
  /// empty before. False, with `handle` still empty, when the system gives no thread or memory.
  [[nodiscard]] static bool start(ZorWorkerHandle& handle, std::shared_ptr<DelegateSlot> delegateSlot,
                                  Entry entry);

  explicit Worker(std::shared_ptr<DelegateSlot> delegateSlot);
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  WorkerThread& thread() { return thread_; }
  const RunInputs& inputs() const { return inputs_; }

  /// Lets go whoever is in `waitForEnd`, now and later.
  void announceEnd() ZOR_EXCLUDES(mutex_);

  /// Waits, without limit, until the worker has emptied its handle.
  void waitForEnd() ZOR_EXCLUDES(mutex_);

 private:
  WorkerThread thread_;
  RunInputs inputs_;
  ZorSuite suite_;
  Mutex mutex_;
  ConditionVariable condition_;
  bool ended_ ZOR_GUARDED_BY(mutex_) = false;
};

}  // namespace zor
