#pragma once

#include <array>
#include <cstdint>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// The last three octets of an IPv4 group address.
struct GroupOctets {
  std::uint8_t mark = 0;  ///< Says what the frame is; the other two are packet bytes in a data frame.
  std::uint8_t first = 0;
  std::uint8_t second = 0;

  bool operator==(const GroupOctets&) const = default;
};

}  // namespace zor::receiver

/// What the two encodings look like on the air. The receiving side has its own constants: nothing here is
/// shared with the sending side.
namespace zor::receiver::wire {

/// Destination of a broadcast.
inline constexpr MacAddress kBroadcastAddress = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};

/// First three bytes of every Ethernet address of an IPv4 multicast group (RFC 1112). The lower 23 bits of
/// the group address follow.
inline constexpr std::array<std::uint8_t, 3> kGroupPrefix = {0x01, 0x00, 0x5e};

/// Version 5 multicast: sync group 239.122.111.114, data groups 239.111.x.y (even frames), 239.114.x.y (odd).
inline constexpr GroupOctets kVersion5SyncGroup = {122, 111, 114};
inline constexpr std::uint8_t kVersion5EvenMark = 111;
inline constexpr std::uint8_t kVersion5OddMark = 114;

/// Version 3: marker group 239.90.0.0, data groups 239.79.x.y (even frames) and 239.82.x.y (odd).
inline constexpr GroupOctets kVersion3MarkerGroup = {90, 0, 0};
inline constexpr std::uint8_t kVersion3EvenMark = 79;
inline constexpr std::uint8_t kVersion3OddMark = 82;

/// Length of data frame 0 less the length of a sync or marker frame.
inline constexpr int kVersion5FirstFrameOffset = 0;
inline constexpr int kVersion3FirstFrameOffset = 1;

/// Broadcast lengths, counted from the length of sync 1.
inline constexpr int kSync1Offset = 0;
inline constexpr int kSync3Offset = 1;
inline constexpr int kPositionOffset = 2;
inline constexpr int kValueOffset = 102;
inline constexpr int kSync2Offset = 358;

/// Packets of both encodings: at most 100 bytes, sent as at most 50 multicast frames of two.
inline constexpr int kMaxPacketBytes = 100;
inline constexpr int kMaxPairs = kMaxPacketBytes / 2;

/// The schedule's times unless the sender is configured otherwise, microseconds: from one multicast data
/// frame to the next; from one byte of the broadcasts to the next, a value frame and a position frame; the
/// pause after a cycle of either.
inline constexpr std::int64_t kVersion5MulticastPace = 30'000;
inline constexpr std::int64_t kVersion5BroadcastPace = 30'000;
inline constexpr std::array<std::int64_t, 1> kPauses = {100'000};

/// Named paces send multicasts faster: evenly without a pause, up to this many microseconds apart, or as
/// bursts with one of two pauses.
inline constexpr std::int64_t kSlowestEvenPace = 20'000;
inline constexpr std::array<std::int64_t, 1> kNoPauses = {0};
inline constexpr std::int64_t kSlowestBurstPace = 6'000;
inline constexpr std::array<std::int64_t, 2> kBurstPauses = {60'000, 100'000};

/// Version 3 has one pace. A cycle begins with three markers and ends with a pause. Mixed into version 5, it
/// follows the pause after a multicast cycle.
inline constexpr std::int64_t kVersion3Pace = 10'000;
inline constexpr std::int64_t kVersion3Markers = 3 * kVersion3Pace;
inline constexpr std::int64_t kVersion3Pause = 20'000;

/// The longest for which an access point holds frames while stations sleep, microseconds.
inline constexpr std::int64_t kLongestHold = 300'000;

/// An access point that holds nothing relays a frame within this time, microseconds. Frames of a sender with
/// the same destination lie further apart.
inline constexpr std::int64_t kRelayedWithin = 7'000;

/// Limits of the fields.
inline constexpr int kMaxSsid = 32;
inline constexpr int kMaxPassPhrase = 64;
inline constexpr int kMaxAppend = 16;

/// Version 5 packet: head (append length plus kHeadBias), CRC-8 of the payload, SSID length, pass phrase
/// length; then SSID, pass phrase and append bytes, the payload.
inline constexpr int kVersion5Head = 0;
inline constexpr int kVersion5Crc = 1;
inline constexpr int kVersion5SsidLength = 2;
inline constexpr int kVersion5PassPhraseLength = 3;
inline constexpr int kVersion5Payload = 4;
inline constexpr int kHeadBias = 16;

/// Version 3 packet: CRC-8 of all that follows, SSID length, pass phrase length, SSID, pass phrase.
inline constexpr int kVersion3Crc = 0;
inline constexpr int kVersion3SsidLength = 1;
inline constexpr int kVersion3PassPhraseLength = 2;
inline constexpr int kVersion3Texts = 3;

}  // namespace zor::receiver::wire
