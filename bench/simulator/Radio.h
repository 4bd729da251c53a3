#pragma once

#include <cstdint>

#include "bench/simulator/Random.h"

namespace zor::bench {

/// What an access point keeps back for stations that sleep, and lets go after its beacons.
enum class Held { nothing, multicast, groups };

/// What a radio channel does to frames.
struct RadioConditions {
  double loss = 0;            ///< Mean share of the frames that are lost.
  bool bursts = false;        ///< Losses come in bursts instead of one by one.
  Held held = Held::nothing;  ///< `groups`: multicasts and broadcasts.
  std::int64_t holdUs = 0;    ///< From one release to the next.
};

/// Says which frames are lost. With bursts the channel has two states, in one of which every frame is lost;
/// it changes between them at random times, so frames that follow each other closely share their fate.
class LossModel {
 public:
  LossModel(const RadioConditions& conditions, Random& random);

  /// For a frame at `timeUs`, which does not run backwards.
  bool loses(std::int64_t timeUs);

 private:
  double nextStay() const;

  const RadioConditions& conditions_;
  Random& random_;
  bool bad_ = false;
  double changeUs_ = 0;
};

/// The instants at which an access point releases what it has held.
class Releases {
 public:
  Releases(const RadioConditions& conditions, Random& random)
      : holdUs_(conditions.holdUs), nextUs_(holdUs_ > 0 ? random.below(holdUs_) : 0) {}

  std::int64_t next() const { return nextUs_; }
  void pass() { nextUs_ += holdUs_; }

  /// The first release at or after `timeUs`; that time itself where nothing is held.
  std::int64_t after(std::int64_t timeUs) {
    if (holdUs_ == 0) return timeUs;
    while (nextUs_ < timeUs) pass();
    return nextUs_;
  }

 private:
  std::int64_t holdUs_;
  std::int64_t nextUs_;
};

/// How long a frame with a datagram of `length` bytes keeps the channel busy: group frames go out at the
/// lowest rate, 1 Mbit/s with a long preamble (IEEE 802.11, DSSS).
constexpr std::int64_t airTimeUs(std::int32_t length) {
  constexpr std::int64_t kPreambleUs = 192;
  constexpr std::int64_t kHeaders = 24 + 8 + 8 + 4 + 20 + 8;  // MAC, cipher, LLC/SNAP, FCS, IPv4, UDP.
  constexpr std::int64_t kUsPerOctet = 8;
  return kPreambleUs + (kHeaders + length) * kUsPerOctet;
}

}  // namespace zor::bench
