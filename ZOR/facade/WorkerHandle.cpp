#include "ZOR/facade/WorkerHandle.h"

#include "ZOR/facade/Worker.h"
#include "ZOR/facade/WorkerSlot.h"
#include "ZOR/platform/NeverDestroyed.h"

namespace {

constinit zor::NeverDestroyed<zor::WorkerSlot> smartConfigBc;
constinit zor::NeverDestroyed<zor::WorkerSlot> smartConfigMc;
constinit zor::NeverDestroyed<zor::WorkerSlot> smartOnlineListen;
constinit zor::NeverDestroyed<zor::WorkerSlot> deviceSearch;
constinit zor::NeverDestroyed<zor::WorkerSlot> upgrade;

}  // namespace

constinit ZorWorkerHandle& s_threadSmartConfigBc = smartConfigBc.value;
constinit ZorWorkerHandle& s_threadSmartConfigMc = smartConfigMc.value;
constinit ZorWorkerHandle& s_threadSmartOnlineListen = smartOnlineListen.value;
constinit ZorWorkerHandle& s_threadDeviceSearch = deviceSearch.value;
constinit ZorWorkerHandle& s_threadUpgrade = upgrade.value;

ZorWorkerHandle::operator bool() const {
  return zor::WorkerSlot::of(*this).worker() != nullptr;
}

void ZorWorkerHandle::cancel() {
  zor::WorkerSlot::of(*this).cancel(zor::CancelReason::stopped);
}

void ZorWorkerHandle::waitUntilEmpty() {
  while (const auto running = zor::WorkerSlot::of(*this).worker()) running->waitForEnd();
}
