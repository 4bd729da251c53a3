#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace zor::receiver {

/// An IEEE 802 MAC address, first byte on the wire first.
using MacAddress = std::array<std::uint8_t, 6>;

/// "02:00:00:00:00:01", in lower case.
std::string textOf(const MacAddress& mac);

}  // namespace zor::receiver
