#include "ZOR/facade/WorkerHandle.h"

#include <utility>

#include "ZOR/facade/Worker.h"
#include "ZOR/platform/NeverDestroyed.h"

namespace {

constinit zor::NeverDestroyed<ZorWorkerHandle> smartConfigBc;
constinit zor::NeverDestroyed<ZorWorkerHandle> smartConfigMc;
constinit zor::NeverDestroyed<ZorWorkerHandle> smartOnlineListen;
constinit zor::NeverDestroyed<ZorWorkerHandle> deviceSearch;
constinit zor::NeverDestroyed<ZorWorkerHandle> upgrade;

}  // namespace

constinit ZorWorkerHandle& s_threadSmartConfigBc = smartConfigBc.value;
constinit ZorWorkerHandle& s_threadSmartConfigMc = smartConfigMc.value;
constinit ZorWorkerHandle& s_threadSmartOnlineListen = smartOnlineListen.value;
constinit ZorWorkerHandle& s_threadDeviceSearch = deviceSearch.value;
constinit ZorWorkerHandle& s_threadUpgrade = upgrade.value;

ZorWorkerHandle::operator bool() const {
  const zor::MutexLock lock(mutex_);
  return worker_ != nullptr;
}

void ZorWorkerHandle::cancel() {
  if (const auto running = worker()) running->thread().cancel();
}

void ZorWorkerHandle::waitUntilEmpty() {
  while (const auto running = worker()) running->waitForEnd();
}

void ZorWorkerHandle::wake() {
  if (const auto running = worker()) running->thread().wake();
}

void ZorWorkerHandle::set(std::shared_ptr<zor::Worker> worker) {
  const zor::MutexLock lock(mutex_);
  worker_.swap(worker);
}

void ZorWorkerHandle::clear() {
  std::shared_ptr<zor::Worker> ending;
  {
    const zor::MutexLock lock(mutex_);
    worker_.swap(ending);
  }
  if (ending) ending->announceEnd();
}

std::shared_ptr<zor::Worker> ZorWorkerHandle::worker() const {
  const zor::MutexLock lock(mutex_);
  return worker_;
}
