#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "receiver/analysis/FrameLog.h"
#include "receiver/capture/CapturedFrame.h"
#include "receiver/decoder/Credentials.h"

namespace zor::receiver {

/// What a channel of a run is sent by.
enum class ChannelKind : std::uint8_t { multicast, broadcast, version3 };
inline constexpr std::size_t kChannelKinds = 3;

inline constexpr std::size_t kMaxPacketSize = 100;

/// Lengths that moved in the middle of a run.
struct LengthChange {
  std::int32_t from = 0;
  std::int32_t to = 0;
  std::int64_t timeMicroseconds = 0;
};

/// One channel of one sender, on one leg.
struct ChannelReport {
  std::uint64_t frames = 0;
  std::uint64_t syncs = 0;
  /// Length of the frames that start a cycle, as captured: the length base and the overhead of the link.
  std::optional<std::int32_t> syncLength;
  std::optional<LengthChange> lengthChange;            ///< The latest.
  std::bitset<kMaxPacketSize> heard;                   ///< Packet bytes that this channel has shown.
  std::array<std::int64_t, kMaxPacketSize> heardAt{};  ///< When it first did, for those.
  unsigned contradictions = 0;                         ///< Bytes heard with another value than before.
  unsigned cycles = 0;                                 ///< Begun, as far as was heard.
  std::optional<double> loss;        ///< Share of the frames that were not captured, 0 to 1.
  std::optional<double> intervalMs;  ///< From one frame to the next, median.
  std::optional<double> pauseMs;     ///< Extra, after a cycle, median.
  std::vector<std::uint32_t> gaps;   ///< From one captured frame to the next: how many of 0, 1, 2 ... ms;
                                     ///< of 511 ms stand for all longer ones.
  bool inBursts = false;             ///< Released many at a time, so that times mean nothing.
};

/// When a packet had been heard whole.
struct Completion {
  Credentials credentials;
  Leg leg = Leg::local;
  std::int64_t timeMicroseconds = 0;
  std::uint64_t frame = 0;  ///< Number in the capture, from 1.
};

enum class Crc : std::uint8_t { unknown, holds, wrong };

/// What was captured of one sender on one leg.
struct LegReport {
  Leg leg = Leg::local;
  std::array<ChannelReport, kChannelKinds> channels;
  std::uint64_t frames = 0;   ///< Of a run, each counted once.
  std::uint64_t retries = 0;  ///< Heard again because they were not acknowledged.
  bool isProtected = false;
  std::int32_t headerBytes = 0;                              ///< As in CapturedFrame.
  std::int64_t firstMicroseconds = 0, lastMicroseconds = 0;  ///< Of these frames.
  int bytesKnown = 0;  ///< By all channels of the encoding of which more is known.
  int bytesTotal = 0;  ///< 0 while the header is not known.
  Crc crc = Crc::unknown;
  std::optional<Completion> completion;  ///< The first.
  std::vector<LoggedFrame> log;          ///< The first frames, if the analysis keeps any.
  std::uint64_t leftOut = 0;             ///< Frames that came after those.

  const ChannelReport& channel(ChannelKind kind) const { return channels[static_cast<std::size_t>(kind)]; }
};

/// One phone: its own frames and the access point's copies of them, which are the same frames on two legs.
struct SenderReport {
  MacAddress address{};
  bool addressIsIpv4 = false;           ///< As in CapturedFrame.
  std::uint64_t unicasts = 0;           ///< From the access point to single stations, in its name.
  std::vector<LegReport> legs;          ///< At least one.
  std::vector<Completion> completions;  ///< The first of each leg and, up to a limit, of other credentials.
};

/// What a capture holds.
struct CaptureReport {
  std::uint64_t frames = 0;
  std::array<std::uint64_t, kFrameKinds> kinds{};  ///< Frames by FrameKind.
  // Of the data frames:
  std::uint64_t broadcasts = 0;
  std::uint64_t ourGroups = 0;    ///< To groups that smart configuration uses.
  std::uint64_t otherGroups = 0;  ///< To other groups, with those of IPv6.
  std::uint64_t unicasts = 0;
  std::int64_t firstMicroseconds = 0, lastMicroseconds = 0;
  std::vector<SenderReport> senders;  ///< Those that send smart configuration, the first heard first.
};

}  // namespace zor::receiver
