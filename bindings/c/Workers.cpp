#include "bindings/c/Support.h"

namespace {

/// Null when there is no such kind.
ZorWorkerHandle* handleOf(std::int32_t worker) {
  switch (worker) {
    case ZOR_WORKER_BROADCAST:
      return &s_threadSmartConfigBc;
    case ZOR_WORKER_MULTICAST:
      return &s_threadSmartConfigMc;
    case ZOR_WORKER_LISTENER:
      return &s_threadSmartOnlineListen;
    case ZOR_WORKER_SEARCH:
      return &s_threadDeviceSearch;
    case ZOR_WORKER_UPGRADE:
      return &s_threadUpgrade;
    default:
      return nullptr;
  }
}

}  // namespace

std::int32_t zor_worker_is_running(std::int32_t worker) {
  const ZorWorkerHandle* const handle = handleOf(worker);
  if (handle == nullptr) return ZOR_ERROR_ARGUMENT;
  return *handle ? 1 : 0;
}

std::int32_t zor_worker_cancel(std::int32_t worker) {
  ZorWorkerHandle* const handle = handleOf(worker);
  if (handle == nullptr) return ZOR_ERROR_ARGUMENT;
  handle->cancel();
  return ZOR_OK;
}

std::int32_t zor_worker_wait(std::int32_t worker) {
  ZorWorkerHandle* const handle = handleOf(worker);
  if (handle == nullptr) return ZOR_ERROR_ARGUMENT;
  handle->waitUntilEmpty();
  return ZOR_OK;
}
