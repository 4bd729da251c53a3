#pragma once

#include <cstdint>

#include "simulator/Random.h"

namespace zor::simulator {

/// What an access point holds back for stations that sleep, until its next release.
enum class Held { nothing, multicast, groups };

/// What a radio channel does to frames.
struct RadioConditions {
  double loss = 0;            ///< Mean share of the frames that are lost.
  bool bursts = false;        ///< Losses come in bursts instead of one by one.
  bool byLength = false;      ///< Each bit is as likely to be lost; `loss` is that of an empty datagram.
  Held held = Held::nothing;  ///< `groups`: both multicasts and broadcasts.
  std::int64_t holdUs = 0;    ///< From one release to the next.
};

/// Decides which frames are lost. With bursts the channel has two states, a bad one in which every frame is
/// lost and a good one in which none is, and changes between them at random times. So frames that follow each
/// other closely are mostly lost or received together.
class LossModel {
 public:
  /// `conditions` and `random` must outlive the model.
  LossModel(const RadioConditions& conditions, Random& random) : conditions_(conditions), random_(random) {
    if (conditions.bursts) drawFirstState();
  }

  /// True when a frame with a datagram of `length` bytes is lost at `timeUs`. Times must not decrease from
  /// call to call.
  bool loses(std::int64_t timeUs, std::int32_t length);

 private:
  void drawFirstState();
  double nextStay() const;

  const RadioConditions& conditions_;
  Random& random_;
  bool bad_ = false;
  double changeUs_ = 0;
};

/// The times at which an access point releases the frames that it holds.
class Releases {
 public:
  Releases(const RadioConditions& conditions, Random& random)
      : holdUs_(conditions.holdUs), nextUs_(holdUs_ > 0 ? random.below(holdUs_) : 0) {}

  std::int64_t next() const { return nextUs_; }
  void pass() { nextUs_ += holdUs_; }

  /// Returns the first release at or after `timeUs`, or `timeUs` itself when nothing is held.
  std::int64_t after(std::int64_t timeUs) {
    if (holdUs_ == 0) return timeUs;
    while (nextUs_ < timeUs) pass();
    return nextUs_;
  }

 private:
  std::int64_t holdUs_;
  std::int64_t nextUs_;
};

/// How long a frame with a datagram of `length` bytes keeps the channel busy, microseconds. Group frames are
/// sent at the lowest rate, 1 Mbit/s with a long preamble (IEEE 802.11, DSSS).
constexpr std::int64_t airTimeUs(std::int32_t length) {
  constexpr std::int64_t kPreambleUs = 192;
  constexpr std::int64_t kHeaders = 24 + 16 + 8 + 4 + 20 + 8;  // MAC, CCMP, LLC/SNAP, FCS, IPv4, UDP.
  constexpr std::int64_t kUsPerByte = 8;
  return kPreambleUs + (kHeaders + length) * kUsPerByte;
}

}  // namespace zor::simulator
