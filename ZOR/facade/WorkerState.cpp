#include "ZOR/facade/WorkerState.h"

namespace zor {

ZorWorkerState endState(CancelReason reason, ZorWorkerState otherwise) {
  switch (reason) {
    case CancelReason::stopped:
      return ZorWorkerState::stopped;
    case CancelReason::replaced:
      return ZorWorkerState::replaced;
    case CancelReason::timedOut:
      return ZorWorkerState::timedOut;
    case CancelReason::none:
      break;
  }
  return otherwise;
}

}  // namespace zor
