#pragma once

#include <cstdint>
#include <memory>

#include "ZOR/facade/WorkerHandle.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/WorkerThread.h"

namespace zor {

class Worker;

/// A public handle's other side: the worker of one kind that runs now. Any thread.
class WorkerSlot final : public ZorWorkerHandle {
 public:
  constexpr WorkerSlot() = default;

  /// The slot of `handle`: there are no handles but slots.
  static WorkerSlot& of(ZorWorkerHandle& handle) { return static_cast<WorkerSlot&>(handle); }
  static const WorkerSlot& of(const ZorWorkerHandle& handle) {
    return static_cast<const WorkerSlot&>(handle);
  }

  /// Stores the worker that is about to start, and gives it the next number.
  void set(std::shared_ptr<Worker> worker) ZOR_EXCLUDES(mutex_);

  /// Empties the slot and releases whoever waits for that.
  void clear() ZOR_EXCLUDES(mutex_);

  /// The worker, or null.
  std::shared_ptr<Worker> worker() const ZOR_EXCLUDES(mutex_);

  /// The number of the worker, 1 for the first of its kind; 0 when none runs.
  std::int64_t number() const ZOR_EXCLUDES(mutex_);

  /// Asks the worker, if there is one, to end. Does not wait for it.
  void cancel(CancelReason reason) ZOR_EXCLUDES(mutex_);

  /// The same, but only if it is the worker of this number.
  void cancel(CancelReason reason, std::int64_t number) ZOR_EXCLUDES(mutex_);

 private:
  mutable Mutex mutex_;
  std::int64_t started_ ZOR_GUARDED_BY(mutex_) = 0;  ///< How many workers were stored so far.
  std::shared_ptr<Worker> worker_ ZOR_GUARDED_BY(mutex_);
};

}  // namespace zor
