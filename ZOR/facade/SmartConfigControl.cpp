#include "ZOR/facade/SmartConfigControl.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>

#include "ZOR/facade/RunListener.h"
#include "ZOR/facade/SuiteInterface.h"
#include "ZOR/facade/WorkerHandle.h"
#include "ZOR/net/Clock.h"
#include "ZOR/net/Stopwatch.h"
#include "ZOR/state/CopyText.h"
#include "ZOR/state/Counters.h"
#include "ZOR/state/DeviceState.h"
#include "ZOR/state/Tunables.h"

namespace zor {
namespace {

/// When the latest run began, by the monotonic clock; the suite's state holds the wall clock's reading.
std::atomic<std::int64_t> smartSteadyStartMs{0};

}  // namespace

void storeSmartConfigInputs(std::string_view ssid, std::string_view password, std::int32_t timeout) {
  copyText(ssid, s_ZorDevice.ssid);
  copyText(password, s_ZorDevice.password);
  // In this order: a broadcast sender that runs on beside a version 3 start must not see the new
  // time-out with the old start, nor a reader of the progress the new start with the old last send.
  const long now = ZorGetUsec();
  smartSteadyStartMs = steadyMs();
  s_ZorDevice.smartLastMs = now;
  s_ZorDevice.smartStartMs = now;
  s_ZorDevice.smartTimeout = timeout;
  s_ZorDevice.smartStatus = 0;
  noteRunStarted();
}

bool smartConfigTimeLeft() {
  const std::int32_t timeout = s_ZorDevice.smartTimeout;  // First, as it is stored last.
  return elapsedMs(s_ZorDevice.smartStartMs, smartSteadyStartMs) < timeout;
}

}  // namespace zor

void ZorSuite::SmartConfigV5_Append(const std::uint8_t* bytes, std::size_t length) {
  if (bytes == nullptr) {
    s_ZorDevice.appendLen = 0;
    return;
  }
  const std::size_t kept = std::min(length, kZorMaxAppendLength);
  std::memmove(s_ZorDevice.appendData, bytes, kept);  // The bytes may be the state's own.
  std::memset(s_ZorDevice.appendData + kept, 0, kZorAppendSize - kept);
  s_ZorDevice.appendLen = static_cast<std::int32_t>(kept);
}

void ZorSuite::SmartConfigV5_SetProperty(const std::uint8_t* bytes, std::size_t length) {
  ZorTunable* const tunables[] = {
      &s_ZorSmart5_McLen,           &s_ZorSmart5_McCharInterval,  &s_ZorSmart5_McLoopInterval,
      &s_ZorSmart5_McBlockInterval, &s_ZorSmart5_McTagRepeat,     &s_ZorSmart5_McDataRepeat,
      &s_ZorSmart5_McLoopRepeat,    &s_ZorSmart5_BcLen,           &s_ZorSmart5_BcCharInterval,
      &s_ZorSmart5_BcLoopInterval,  &s_ZorSmart5_BcBlockInterval, &s_ZorSmart5_BcTagRepeat,
      &s_ZorSmart5_BcDataRepeat,    &s_ZorSmart5_BcLoopRepeat,
  };
  if (bytes == nullptr || length < std::size(tunables)) return;
  for (ZorTunable* const tunable : tunables) *tunable = *bytes++;
}

void ZorSuite::SmartConfigV5_MixV3Enable(std::uint8_t flag) {
  s_ZorSmart5_MixV3 = flag;
}

void ZorSuite::SmartConfigStop() {
  s_threadSmartConfigBc.cancel();
  s_threadSmartConfigMc.cancel();
  s_threadSmartOnlineListen.cancel();
}

std::int32_t ZorSuite::SmartConfigProgress() {
  const std::int32_t status = s_ZorDevice.smartStatus;
  const std::int32_t timeout = s_ZorDevice.smartTimeout;
  if (status < 0) return status;
  if (timeout <= 0) return 100;
  // 32-bit arithmetic that wraps, as the low words of the two times give it.
  const auto passed = static_cast<std::uint32_t>(s_ZorDevice.smartLastMs.load()) -
                      static_cast<std::uint32_t>(s_ZorDevice.smartStartMs.load());
  const std::int32_t percent = static_cast<std::int32_t>(passed * 100U) / timeout;
  return std::min(percent, 100);
}

ZorRunReport ZorSuite::SmartConfigReport() {
  return {zor::multicastCounters.report(), zor::broadcastCounters.report(), zor::listenerCounters.report()};
}
