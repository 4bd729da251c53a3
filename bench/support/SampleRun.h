#pragma once

#include "ZOR/ZorSuite.h"
#include "ZOR/smartconfig/SenderInputs.h"
#include "ZOR/state/CopyText.h"

namespace zor::bench {

// The version 5 run that the benchmarks measure.

inline constexpr const char* kSsid = "HomeWifi1";
inline constexpr const char* kPassPhrase = "password1234";

/// Where smart configuration datagrams are sent.
inline constexpr std::uint16_t kSmartConfigPort = 6001;

inline SenderInputs sampleInputs() {
  SenderInputs inputs;
  copyText(kSsid, inputs.ssid);
  copyText(kPassPhrase, inputs.password);
  return inputs;
}

/// Starts both senders, with a time-out longer than any measurement.
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
