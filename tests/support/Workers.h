#pragma once

#include "ZOR/ZorSuite.h"

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
