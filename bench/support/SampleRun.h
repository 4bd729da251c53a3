#pragma once

#include "ZOR/ZorSuite.h"
#include "bench/support/RecordedSchedule.h"

namespace zor::bench {

// The version 5 run that the benchmarks of the senders measure.

inline constexpr const char* kSsid = "HomeWifi1";
inline constexpr const char* kPassPhrase = "password1234";

inline RunInputs sampleInputs() {
  return makeInputs(kSsid, kPassPhrase);
}

/// Starts both senders, for longer than any measurement.
inline void startSenders(ZorSuite& suite) {
  constexpr std::int32_t kTimeoutMs = 3'600'000;
  suite.SmartConfigV5_Start(kSsid, kPassPhrase, kTimeoutMs);
}

/// Blocks until both senders have ended.
inline void waitForSenders() {
  s_threadSmartConfigBc.waitUntilEmpty();
  s_threadSmartConfigMc.waitUntilEmpty();
}

}  // namespace zor::bench
