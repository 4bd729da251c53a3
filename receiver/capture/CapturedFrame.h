#pragma once

#include <cstddef>
#include <cstdint>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// The part of its way on which a frame was captured. A phone's frame and the access point's copy of it have
/// the same source and differ in this.
enum class Leg : std::uint8_t {
  local,                ///< On a wire, or without a link layer.
  outgoing,             ///< Sent by the capturing computer itself.
  toAccessPoint,        ///< IEEE 802.11, To DS.
  fromAccessPoint,      ///< From DS: the access point's copy.
  betweenAccessPoints,  ///< Both.
  direct,               ///< Neither.
};
inline constexpr std::size_t kLegs = 6;

enum class FrameKind : std::uint8_t {
  data,           ///< The only kind whose addresses and length mean anything to a module.
  fragment,       ///< Part of a frame: its length says nothing.
  aggregate,      ///< A-MSDU: the destinations of the frames in it are part of the encrypted content.
  noContent,      ///< A data frame without data.
  management,     ///< IEEE 802.11.
  control,        ///< IEEE 802.11.
  otherProtocol,  ///< Not IPv4, in a capture that keeps no destination addresses.
  damaged,        ///< The receiver found its check sum wrong.
  unreadable,     ///< Too short for its headers, or headers that contradict themselves.
};
inline constexpr std::size_t kFrameKinds = 9;

/// What a capture says about one frame from outside its content. All but `timeMicroseconds` and `kind` is
/// meaningful for data frames only.
struct CapturedFrame {
  std::int64_t timeMicroseconds = 0;  ///< Since any moment; never beyond what 300,000 years take.
  FrameKind kind = FrameKind::unreadable;
  Leg leg = Leg::local;
  bool isProtected = false;       ///< IEEE 802.11: encrypted.
  bool isRetry = false;           ///< IEEE 802.11: sent again, because it was not acknowledged.
  bool isQos = false;             ///< IEEE 802.11: with a QoS control field.
  std::uint16_t sequence = 0;     ///< IEEE 802.11: sequence number, 0 to 4095.
  std::int32_t length = 0;        ///< Bytes after the link layer's header, without a frame check sequence.
  std::int32_t headerBytes = 0;   ///< What LLC, IPv4 and UDP take of `length`; a cipher takes more.
  MacAddress source{};            ///< The phone's, whatever relays the frame. See `addressesAreIpv4`.
  MacAddress destination{};       ///< As in Observation.
  bool addressesAreIpv4 = false;  ///< The capture keeps no link addresses: the source is 0, 0 and the IPv4
                                  ///< address.
};

}  // namespace zor::receiver
