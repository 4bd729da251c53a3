#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "receiver/decoder/Observation.h"

namespace zor::simulator {

/// The fourteen pacing values in the order of `ZorSuite::SmartConfigV5_SetProperty`.
using Pace = std::array<std::uint8_t, 14>;

/// What a phone sends to a module. Longer texts and data are cut as the library cuts them.
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

/// A piece of information is a packet byte. The lengths and the texts are in both packets and count once.
inline constexpr int kPieces = 101;
inline constexpr int kVersion3CrcPiece = 100;
inline constexpr int kNoPiece = -1;

/// One frame of a phone's endless run.
struct PlannedFrame {
  std::int64_t timeUs = 0;  ///< Since the start of the block.
  receiver::MacAddress destination{};
  std::int32_t length = 0;  ///< Of the datagram, bytes.
  bool multicast = false;
  std::array<int, 2> pieces{kNoPiece, kNoPiece};
};

/// One block of a channel's frames, which repeats every `periodUs`.
struct PlannedChannel {
  std::vector<PlannedFrame> frames;
  std::int64_t periodUs = 0;
};

/// Everything that one phone sends: the library's own schedules at one pace, for one secret.
struct PhonePlan {
  Secret secret;
  int piecesVersion5 = 0;  ///< The version 5 packet is the pieces 0 up to this one, exclusive.
  int endVersion3 = 0;     ///< The version 3 packet is the pieces 2 up to this one, exclusive, and its CRC.
  std::vector<PlannedChannel> channels;

  double framesPerSecond() const;

  /// The share of the time, 0 to 1, for which the frames keep the radio channel busy.
  double airTimeShare() const;
};

/// Plans the channels that are both chosen and switched on by the pace: a length base of 0 switches one off.
/// Sets the process's pacing tunables and leaves them so: only one thread at a time may make plans.
PhonePlan makePlan(const Secret& secret, const Pace& pace, const Channels& channels);

}  // namespace zor::simulator
