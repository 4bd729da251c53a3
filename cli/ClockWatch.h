#pragma once

#include <chrono>

#include "ZOR/ZorSuite.h"

namespace zor::cli {

/// Notices while a command runs what makes its clocks lie: a process that was stopped, a computer that was
/// asleep, a clock that was set.
class ClockWatch {
 public:
  using Clock = std::chrono::steady_clock;

  /// Notes a wait that was to last at most `limit` and took `took`.
  void noteWait(Clock::duration took, std::chrono::milliseconds limit) {
    constexpr std::chrono::seconds kStandStill{1};  // A wait that is longer by less is a mere delay.
    if (took - limit > kStandStill) stoodStill_ += took - limit;
  }

  /// How long the process did not run although it was due to.
  std::chrono::seconds stoodStill() const { return std::chrono::floor<std::chrono::seconds>(stoodStill_); }

  /// How far the wall clock went ahead of the time that has passed; 0 or less when it did not.
  std::chrono::seconds wentForward() const {
    const auto steady = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start_);
    return std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::milliseconds(ZorGetUsec() - wallStartMs_) - steady);
  }

 private:
  Clock::time_point start_ = Clock::now();
  long wallStartMs_ = ZorGetUsec();
  Clock::duration stoodStill_{0};
};

}  // namespace zor::cli
