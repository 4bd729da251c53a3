#pragma once

#include <algorithm>
#include <cstdint>

#include "simulator/PhonePlan.h"
#include "simulator/Random.h"

namespace zor::simulator {

/// The frames of one channel, block after block.
///
/// Each frame leaves late by an exponentially distributed time, as systems and busy channels delay it.
class ChannelSender {
 public:
  /// Starts `startUs` after the phone did. `channel` and `random` must outlive the sender.
  ChannelSender(const PlannedChannel& channel, std::int64_t startUs, Random& random)
      : channel_(&channel), random_(&random) {
    const auto later =
        std::lower_bound(channel.frames.begin(), channel.frames.end(), startUs % channel.periodUs,
                         [](const PlannedFrame& frame, std::int64_t us) { return frame.timeUs < us; });
    index_ = static_cast<std::size_t>(later - channel.frames.begin());
    blockUs_ = -(startUs % channel.periodUs);
    schedule();
  }

  /// When the next frame leaves, microseconds since the start of the sender.
  std::int64_t time() const { return timeUs_; }
  const PlannedFrame& frame() const { return channel_->frames[index_]; }

  void advance() {
    ++index_;
    schedule();
  }

 private:
  static constexpr double kMeanDelayUs = 300;

  void schedule() {
    if (index_ == channel_->frames.size()) {
      index_ = 0;
      blockUs_ += channel_->periodUs;
    }
    const auto delay = static_cast<std::int64_t>(random_->exponential(kMeanDelayUs));
    timeUs_ = std::max(timeUs_, blockUs_ + frame().timeUs + delay);
  }

  const PlannedChannel* channel_;
  Random* random_;
  std::size_t index_ = 0;
  std::int64_t blockUs_ = 0;
  std::int64_t timeUs_ = 0;
};

}  // namespace zor::simulator
