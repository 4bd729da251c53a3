#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "receiver/Observation.h"

namespace zor::bench {

/// The fourteen pacing values in the order of `ZorSuite::SmartConfigV5_SetProperty`.
using Pace = std::array<std::uint8_t, 14>;

/// What a phone wants to tell.
struct Secret {
  std::string ssid;
  std::string passPhrase;
  std::vector<std::uint8_t> append;
};

/// Which encodings a phone uses.
struct Channels {
  bool multicast = true;
  bool broadcast = true;
  bool version3 = false;  ///< Mixed into the multicast channel.
};

/// A piece of information is a packet byte. Both packets hold the lengths and the texts, so these count once.
inline constexpr int kPieces = 101;
inline constexpr int kVersion3CrcPiece = 100;
inline constexpr int kNoPiece = -1;

/// One frame of a phone's endless run.
struct PlannedFrame {
  std::int64_t us = 0;  ///< Since the block's begin.
  receiver::MacAddress destination{};
  std::int32_t length = 0;  ///< Of the datagram.
  bool multicast = false;
  std::array<int, 2> pieces{kNoPiece, kNoPiece};
};

struct PlannedChannel {
  std::vector<PlannedFrame> frames;
  std::int64_t periodUs = 0;
};

/// Everything that one phone sends: the library's own schedules under one pace, for one secret.
struct PhonePlan {
  Secret secret;
  int piecesVersion5 = 0;  ///< Pieces 0 to this make the version 5 packet.
  int endVersion3 = 0;     ///< Pieces 2 to this, and the version 3 CRC, make the version 3 packet.
  std::vector<PlannedChannel> channels;

  /// Share of the time for which the frames keep a channel busy.
  double airTimeShare() const;
};

/// Sets the process's pacing tunables on the way, so one thread at a time makes plans.
PhonePlan makePlan(const Secret& secret, const Pace& pace, const Channels& channels);

}  // namespace zor::bench
