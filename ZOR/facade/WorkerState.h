#pragma once

#include "ZOR/platform/WorkerThread.h"
#include "ZOR/state/Reports.h"

namespace zor {

/// How a worker ended that was asked to for `reason`, or that ended by itself as `otherwise`.
ZorWorkerState endState(CancelReason reason, ZorWorkerState otherwise);

}  // namespace zor
