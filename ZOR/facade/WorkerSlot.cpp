#include "ZOR/facade/WorkerSlot.h"

#include "ZOR/facade/Worker.h"

namespace zor {

void WorkerSlot::set(std::shared_ptr<Worker> worker) {
  const MutexLock lock(mutex_);
  worker_.swap(worker);
  ++started_;
}

void WorkerSlot::clear() {
  std::shared_ptr<Worker> ending;
  {
    const MutexLock lock(mutex_);
    worker_.swap(ending);
  }
  if (ending) ending->announceEnd();
}

std::shared_ptr<Worker> WorkerSlot::worker() const {
  const MutexLock lock(mutex_);
  return worker_;
}

std::int64_t WorkerSlot::number() const {
  const MutexLock lock(mutex_);
  return worker_ ? started_ : 0;
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes what the slot holds
void WorkerSlot::cancel(CancelReason reason) {
  if (const auto running = worker()) running->thread().cancel(reason);
}

void WorkerSlot::cancel(CancelReason reason, std::int64_t number) {
  const MutexLock lock(mutex_);
  if (worker_ && started_ == number) worker_->thread().cancel(reason);
}

}  // namespace zor
