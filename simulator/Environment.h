#pragma once

#include <cstdint>

#include "simulator/Radio.h"

namespace zor::simulator {

/// How late frames leave a phone.
struct SenderDelays {
  double meanUs = 300;  ///< Of an exponential distribution: systems and busy channels delay each frame.
  double stallsPerSecond =
      0;  ///< How often the sender stops for `kStallUs`; its run then goes on from there.
};
inline constexpr std::int64_t kStallUs = 80'000;

/// Other devices that send group frames of their own.
struct Neighbours {
  double framesPerSecond = 0;  ///< Of all devices together.
  int devices = 0;             ///< 0: every question has a new address.
  bool foreign = false;  ///< Of other networks: they send short frames only, past the phones' access point.
};

/// A run of each phone with a wrong pass phrase, which was corrected while the module listened.
struct EarlierRun {
  bool exists = false;
  double meanSeconds = 2;       ///< The module hears it for an exponentially distributed time with this mean.
  std::int64_t maxPauseUs = 0;  ///< From its end to the start of the right run.
};

/// Everything between phones and module that is not the phones' runs. Each member is one behaviour; the
/// default is a quiet air.
struct Environment {
  RadioConditions radio;
  SenderDelays delays;
  double ownChatterPerSecond = 0;  ///< Group frames of each phone that are not part of its run.
  Neighbours neighbours;
  bool videoMulticast = false;  ///< Another device streams to a group.
  EarlierRun earlierRun;
  bool rangeExtender = false;   ///< All phones' frames carry the extender's address.
  bool bothDirections = false;  ///< The module also hears the frames to the access point.
  double repeats = 0;           ///< Share of transmissions that are followed by the same frame again.
  bool hopping = false;         ///< The module visits three channels in turn.
};

}  // namespace zor::simulator
