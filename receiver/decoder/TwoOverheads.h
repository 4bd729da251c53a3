#pragma once

#include <cstdint>
#include <optional>

#include "receiver/decoder/Observation.h"

namespace zor::receiver {

/// A module that hears both the phone and its access point gets each frame twice: first the phone's own, then
/// the relayed copy, whose overhead may be a few bytes more or less. Finds that step between the lengths, and
/// pairs the copies: the relayed one tells that the frame before it was the phone's own.
class TwoOverheads {
 public:
  /// What became of a frame.
  struct Sorted {
    Observation frame;
    bool isSingle = false;  ///< Its other copy was not heard, so it may be either.
  };

  /// Takes the next multicast or broadcast of the sender. While active, a frame waits for its copy, and the
  /// one that waited before it is returned; otherwise the frame itself is.
  std::optional<Sorted> observe(const Observation& frame);

  /// True while frames come in two lengths.
  bool active() const { return votes_ >= kVotesToBelieve; }

  /// Length of the relayed copy less that of the phone's own frame.
  int step() const { return step_; }

  /// True once when frames have just begun, or ceased, to come in two lengths: what was made of them so far
  /// means nothing.
  bool takeChange();

 private:
  static constexpr int kVotesToBelieve = 8;

  struct Channel {
    Observation last;
    bool heard = false;
    bool kept = false;  ///< The last frame waits for its copy.
    bool apart = true;  ///< The last frame came some time after the one before it, not in a burst.
  };

  Channel& channelOf(const Observation& frame);
  Channel multicast_;
  Channel broadcast_;
  int step_ = 0;
  int votes_ = 0;
  bool changed_ = false;
};

}  // namespace zor::receiver
