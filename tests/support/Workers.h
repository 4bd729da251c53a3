#pragma once

#include "ZOR/ZorSuite.h"
#include "tests/support/Wait.h"

inline bool isOver(const ZorWorkerHandle& worker, int limitMs = 2000) {
  return waitUntil([&] { return !worker; }, limitMs);
}

/// True once both senders have ended.
inline bool runIsOver(int limitMs = 3000) {
  return waitUntil([] { return !s_threadSmartConfigMc && !s_threadSmartConfigBc; }, limitMs);
}

/// Asks every worker to end and waits until none is left. An upgrade is only waited for.
inline void endWorkers() {
  ZorSuite suite;
  suite.SmartConfigStop();
  suite.DeviceSearchSetProperty(0, 0);
  for (ZorWorkerHandle* handle : {&s_threadSmartConfigMc, &s_threadSmartConfigBc, &s_threadUpgrade,
                                  &s_threadSmartOnlineListen, &s_threadDeviceSearch}) {
    handle->waitUntilEmpty();
  }
}
