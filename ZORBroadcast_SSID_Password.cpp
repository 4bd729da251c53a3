#include "ZORBroadcast_SSID_Password.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <exception>
#include <string>
#include <utility>

namespace {

constexpr std::int32_t kRunMs = 100'000;

std::string timeOfDayText() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[16];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
  return text;
}

/// Has the next run name `port` to the module, unless it is the usual one. Without a listener, when `port` is
/// negative, there is nothing to name and the run starts all the same.
void appendPort(ZORBroadcast_SSID_Password& wrapper, std::int32_t port) {
  const std::shared_ptr<ZorSuite> suite = wrapper.myZorSuite();
  if (port == kZorAnnouncementPort || port < 0) {
    suite->SmartConfigV5_Append(nullptr, 0);
    wrapper.LogStr("append = nil");
    return;
  }
  const std::array<std::uint8_t, 3> record = ZorMakePortRecord(port);
  suite->SmartConfigV5_Append(record.data(), record.size());
  char text[32];
  std::snprintf(text, sizeof text, "append(3)= <%02x%02x%02x>", record[0], record[1], record[2]);
  wrapper.LogStr(text);
}

}  // namespace

ZORBroadcast_SSID_Password::ZORBroadcast_SSID_Password() = default;

ZORBroadcast_SSID_Password::~ZORBroadcast_SSID_Password() = default;

void ZORBroadcast_SSID_Password::startBroadcast_SSID(std::string_view SSID, std::string_view Password) {
  try {
    _myZorSuite = std::make_shared<ZorSuite>();
  } catch (const std::exception&) {
    return;  // Without memory nothing starts, and the run before continues.
  }
  appendPort(*this, _myZorSuite->SmartConfigOnlineListen(0));
  LogStr("SmartConfig v5 start...");
  _myZorSuite->SmartConfigV5_Start(SSID, Password, kRunMs);
}

void ZORBroadcast_SSID_Password::stopBroadcast() {
  if (_myZorSuite) _myZorSuite->SmartConfigStop();
  ZorLogLine("SmartConfig v5 stop...");
}

void ZORBroadcast_SSID_Password::LogStr(std::string_view text) {
  try {
    ZorPostToMainQueue([time = timeOfDayText(), text = std::string(text)] {
      const std::string line = time + "] " + text + "\r\n";
    });
  } catch (const std::exception&) {
    // The line would have been dropped anyway.
  }
}

std::shared_ptr<ZorSuite> ZORBroadcast_SSID_Password::myZorSuite() const {
  return _myZorSuite;
}

void ZORBroadcast_SSID_Password::setMyZorSuite(std::shared_ptr<ZorSuite> suite) {
  _myZorSuite = std::move(suite);
}
