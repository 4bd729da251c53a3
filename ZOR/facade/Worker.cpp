#include "ZOR/facade/Worker.h"

#include <functional>
#include <memory>
#include <utility>

#include "ZOR/facade/WorkerSlot.h"

namespace zor {

/// Ends a worker on every way out of its thread: an application's log sink may call `pthread_exit` there.
struct Worker::Ending {
  Worker& worker;
  WorkerSlot& slot;
  std::atomic<ZorWorkerState>& state;

  ~Ending() {
    ZorWorkerState unfinished = ZorWorkerState::running;
    state.compare_exchange_strong(unfinished, ZorWorkerState::stopped);
    worker.body_ = nullptr;
    worker.thread_.closeWakeDescriptor();
    slot.clear();
  }
};

bool Worker::run(ZorWorkerHandle& handle, const WorkerKind& kind, Body body) {
  WorkerSlot& slot = WorkerSlot::of(handle);
  const auto worker = std::make_shared<Worker>(std::move(body));
  std::function<void()> wholeRun = [worker, &slot, &state = kind.state] {
    const Ending ending{*worker, slot, state};
    worker->body_(worker->thread_);
  };
  // Set when no allocation can fail any more, but before the start: the worker may end before that returns.
  slot.set(worker);
  if (kind.receives) worker->thread_.openWakeDescriptor();
  if (worker->thread_.start(kind.threadName, std::move(wholeRun))) return true;
  worker->thread_.closeWakeDescriptor();
  slot.clear();
  return false;
}

void Worker::announceEnd() {
  const MutexLock lock(mutex_);
  ended_ = true;
  condition_.notifyAll();
}

void Worker::waitForEnd() {
  const MutexLock lock(mutex_);
  while (!ended_) condition_.wait(mutex_);
}

}  // namespace zor
