#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace zor::receiver {

/// The latest frames of a channel: their lengths, and their times to a tenth of a millisecond.
class FrameHistory {
 public:
  /// Adds a frame. Times must not decrease; a gap longer than some seconds is kept as one of some seconds.
  void add(int length, std::int64_t time) {
    const std::int64_t gap = std::clamp<std::int64_t>((time - lastTime_) / kUnit, 0, UINT16_MAX);
    frames_[next_] = {static_cast<std::int16_t>(length), static_cast<std::uint16_t>(gap)};
    next_ = (next_ + 1) % kMaxFrames;
    count_ = std::min(count_ + 1, kMaxFrames);
    lastTime_ = time;
  }

  /// Calls `observe(length, time)` for each frame, the oldest first.
  template <class Observe>
  void replay(const Observe& observe) const {
    std::int64_t time = lastTime_;
    for (std::size_t i = 1; i < count_; ++i) time -= frames_[at(i)].gap * kUnit;
    for (std::size_t i = 0; i < count_; ++i) {
      if (i > 0) time += frames_[at(i)].gap * kUnit;
      observe(frames_[at(i)].length, time);
    }
  }

  bool empty() const { return count_ == 0; }

  /// Length and time of the latest frame. There must be one.
  int lastLength() const { return frames_[at(count_ - 1)].length; }
  std::int64_t lastTime() const { return lastTime_; }

  void clear() { count_ = 0; }

 private:
  struct Frame {
    std::int16_t length;
    std::uint16_t gap;  ///< Since the frame before it, in units of kUnit.
  };

  /// Room for more than half of a cycle of the longest packet.
  static constexpr std::size_t kMaxFrames = 120;
  static constexpr std::int64_t kUnit = 100;  ///< Microseconds.

  /// `i` counts from the oldest frame.
  std::size_t at(std::size_t i) const { return (next_ + kMaxFrames - count_ + i) % kMaxFrames; }

  std::array<Frame, kMaxFrames> frames_{};
  std::size_t next_ = 0;
  std::size_t count_ = 0;
  std::int64_t lastTime_ = 0;
};

}  // namespace zor::receiver
