#pragma once

#include <algorithm>
#include <cstdint>

#include "simulator/Environment.h"
#include "simulator/FrameSource.h"
#include "simulator/Random.h"

namespace zor::simulator {

/// When a run takes place, as the module's clock has it.
struct RunTimes {
  std::int64_t startUs = 0;  ///< Negative when the run started before the module listened.
  std::int64_t endUs = kNever;
};

/// The frames of one channel of a run, block after block.
class ChannelSender final : public FrameSource {
 public:
  /// `channel`, `delays` and `random` must outlive the sender.
  ChannelSender(const PlannedChannel& channel, const RunTimes& times, const Transmitter& from,
                std::size_t run, const SenderDelays& delays, Random& random)
      : channel_(channel), times_(times), delays_(delays), random_(random) {
    upcoming.from = from;
    upcoming.run = run;
    const std::int64_t missedUs = std::max<std::int64_t>(-times.startUs, 0);
    const std::int64_t missedOfBlockUs = missedUs % channel.periodUs;
    const auto later =
        std::lower_bound(channel.frames.begin(), channel.frames.end(), missedOfBlockUs,
                         [](const PlannedFrame& frame, std::int64_t us) { return frame.timeUs < us; });
    index_ = static_cast<std::size_t>(later - channel.frames.begin());
    blockUs_ = times.startUs + missedUs - missedOfBlockUs;
    stallUs_ = nextStall(0);
    upcoming.timeUs = times.startUs + missedUs;
    schedule();
  }

  void advance() override {
    ++index_;
    schedule();
  }

 private:
  void schedule() {
    if (index_ == channel_.frames.size()) {
      index_ = 0;
      blockUs_ += channel_.periodUs;
    }
    upcoming.frame = channel_.frames[index_];
    const std::int64_t dueUs = blockUs_ + upcoming.frame.timeUs;
    if (dueUs >= stallUs_) {
      blockUs_ += kStallUs;
      stallUs_ = nextStall(dueUs);
      return schedule();
    }
    const auto delayUs = static_cast<std::int64_t>(random_.exponential(delays_.meanUs));
    upcoming.timeUs = std::max(upcoming.timeUs, dueUs + delayUs);
    if (upcoming.timeUs >= times_.endUs) upcoming.timeUs = kNever;
  }

  std::int64_t nextStall(std::int64_t afterUs) {
    if (delays_.stallsPerSecond <= 0) return kNever;
    return afterUs + static_cast<std::int64_t>(random_.exponential(1e6 / delays_.stallsPerSecond));
  }

  const PlannedChannel& channel_;
  RunTimes times_;
  const SenderDelays& delays_;
  Random& random_;
  std::size_t index_ = 0;
  std::int64_t blockUs_ = 0;
  std::int64_t stallUs_ = kNever;
};

}  // namespace zor::simulator
