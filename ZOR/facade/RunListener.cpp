#include "ZOR/facade/RunListener.h"

#include <atomic>
#include <cstdint>

#include "ZOR/facade/SmartConfigControl.h"
#include "ZOR/facade/WorkerSlot.h"

namespace zor {
namespace {

/// Number of the listener that the latest run relies on, 0 as long as there is none.
std::atomic<std::int64_t> listenerOfRun{0};

/// What `listenerOfRun` holds while the run may get none.
constexpr std::int64_t kNoListenerWanted = -1;

}  // namespace

void noteRunStarted() {
  listenerOfRun = WorkerSlot::of(s_threadSmartOnlineListen).number();
}

void noteListenerOpened() {
  if (listenerOfRun != 0 || !s_threadSmartConfigMc || !smartConfigTimeLeft()) return;
  listenerOfRun = WorkerSlot::of(s_threadSmartOnlineListen).number();
}

ListenerOfNextRun::ListenerOfNextRun() {
  std::int64_t none = 0;
  listenerOfRun.compare_exchange_strong(none, kNoListenerWanted);
}

ListenerOfNextRun::~ListenerOfNextRun() {
  std::int64_t unwanted = kNoListenerWanted;
  listenerOfRun.compare_exchange_strong(unwanted, 0);
}

void endListenerOfRun() {
  WorkerSlot::of(s_threadSmartOnlineListen).cancel(CancelReason::timedOut, listenerOfRun);
}

}  // namespace zor
