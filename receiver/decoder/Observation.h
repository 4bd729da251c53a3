#pragma once

#include <cstdint>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// All that a module outside the network learns about one frame: when it was heard, its sender, its
/// destination and its length. The frame's content is encrypted and never part of it.
struct Observation {
  /// When the frame was heard, in microseconds of any steady clock.
  std::int64_t timeMicroseconds = 0;
  MacAddress sender{};
  /// ff:ff:ff:ff:ff:ff for a broadcast; 01:00:5e and 23 bits of the group address for an IPv4 multicast (RFC
  /// 1112).
  MacAddress destination{};
  /// Datagram length plus an overhead that is unknown but the same for every frame of a sender, in bytes.
  std::int32_t frameLength = 0;
};

}  // namespace zor::receiver
