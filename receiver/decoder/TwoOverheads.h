#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/MulticastChannel.h"
#include "receiver/decoder/Observation.h"

namespace zor::receiver {

/// A module that hears both the phone and its access point gets each frame twice, and one of the copies may
/// be a few bytes longer. Finds that step between the lengths, and pairs the copies: the shorter of a pair is
/// taken for the frame.
class TwoOverheads {
 public:
  /// What became of a frame.
  struct Sorted {
    Observation frame;  ///< Of a pair: with the time of the earlier copy and the length of the shorter one.
    bool isSingle = false;  ///< Its other copy was not heard so far, so it may be either.
  };

  /// Takes the next multicast or broadcast of the sender. While active(), returns nothing
  /// for a repetition.
  std::optional<Sorted> observe(const Observation& frame);

  /// True while frames come in two lengths.
  bool active() const { return active_; }

  /// Length of the longer copy less that of the shorter one.
  int step() const { return step_; }

  /// True while the access point holds frames back: the later copies come in bursts.
  bool holds() const { return active_ && late_ >= kLateCopiesOfHold; }

  /// True once when frames have just begun, or ceased, to come in two lengths: what was made of them so far
  /// means nothing.
  bool takeChange();

 private:
  /// A frame that was heard lately.
  struct Heard {
    std::int64_t time = 0;
    std::int16_t length = -1;  ///< Negative: no frame.
    GroupOctets group{};       ///< The last octets of its destination.
    bool apart : 1 = false;    ///< It came some time after the frame before it, not in a burst.
    bool paired : 1 = false;
  };

  static constexpr std::size_t kMaxGroupFrames = 16;
  static constexpr int kLateCopiesOfHold = 6;

  const Heard& latest(const GroupOctets& group) const;
  bool isRepetition(const Heard& frame) const;
  void learn(const Heard& frame);
  int stepOfHeldSync(const Heard& frame) const;
  void believe(int step, int votes);
  void doubt();
  void noteDelay(bool isLate);
  bool isCopy(const Heard& earlier, const Heard& frame) const;
  Heard* findCopy(const Heard& frame);
  void keep(const Heard& frame);

  std::array<Heard, kMaxGroupFrames> groupFrames_{};  ///< A ring.
  Heard broadcast_;                                   ///< The latest.
  std::uint8_t next_ = 0;
  std::uint8_t votes_ = 0;
  std::int16_t step_ = 0;
  std::int16_t groupStep_ = 0;      ///< Of the last two group frames if they look like copies; 0 if not.
  std::int16_t broadcastStep_ = 0;  ///< The same of broadcasts.
  bool active_ = false;
  bool changed_ = false;
  std::int8_t late_ = 0;  ///< Copies that came late, less those that did not.
};

}  // namespace zor::receiver
