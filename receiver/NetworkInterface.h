#pragma once

#include <optional>
#include <string>

#include "receiver/Observation.h"

namespace zor::receiver {

/// What the system knows about a network interface at the moment of asking.
struct NetworkInterface {
  MacAddress mac{};  ///< All zero when it has none.
  bool isUp = false;
  bool hasIpv4 = false;  ///< True when it has an IPv4 address of its own.
};

/// Looks an interface up by name. Nothing if there is none of that name. Any thread.
std::optional<NetworkInterface> findInterface(const std::string& name);

/// "02:00:00:00:00:01", in lower case.
std::string textOf(const MacAddress& mac);

}  // namespace zor::receiver
