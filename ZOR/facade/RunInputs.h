#pragma once

#include <cstdint>

#include "ZOR/facade/DeviceState.h"

namespace zor {

/// The texts of the suite state, copied for a worker on the thread that starts it.
struct RunInputs {
  char ssid[kZorSsidSize];
  char password[kZorPasswordSize];
  std::uint8_t appendData[kZorAppendSize];
  std::int32_t appendLen;
  char upgradeIp[kZorIpSize];
  char upgradeUrl[kZorUpgradeUrlSize];
};

}  // namespace zor
