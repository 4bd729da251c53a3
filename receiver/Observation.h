#pragma once

#include <array>
#include <cstdint>

namespace zor::receiver {

/// An IEEE 802 MAC address, first octet on the wire first.
using MacAddress = std::array<std::uint8_t, 6>;

/// All that a module which has not joined the network learns about one frame: when it was heard, from whom,
/// to whom, and how long it was. The frame's content is encrypted and never part of it.
struct Observation {
  /// When the frame was heard, in microseconds of any steady clock.
  std::int64_t timeMicroseconds = 0;
  MacAddress sender{};
  /// ff:ff:ff:ff:ff:ff for a broadcast; 01:00:5e and 23 bits of the group address for an IPv4 multicast
  /// (RFC 1112).
  MacAddress destination{};
  /// Datagram length plus an overhead that is unknown but the same for every frame of a sender, in octets.
  std::int32_t frameLength = 0;
};

}  // namespace zor::receiver
