#pragma once

#include <optional>
#include <string>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// What the system currently knows about a network interface.
struct NetworkInterface {
  MacAddress mac{};  ///< All zero when it has none.
  bool isUp = false;
  bool hasIpv4 = false;  ///< True when it has an IPv4 address of its own.
};

/// Looks an interface up by name. Returns nothing if there is none of that name. Any thread.
std::optional<NetworkInterface> findInterface(const std::string& name);

}  // namespace zor::receiver
