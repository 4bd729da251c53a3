#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "ZOR/net/Clock.h"

namespace zor {

/// Milliseconds since a reading of the suite's clock. That clock steps with the wall clock: a step
/// forward counts, but after a step back the monotonic clock counts on, so that no worker waits
/// longer than it was told to.
class Stopwatch {
 public:
  /// Starts at `startedMs`, a `ZorGetUsec` reading.
  explicit Stopwatch(long startedMs) : wallMs_(startedMs) {}

  std::int64_t elapsedMs() const {
    const auto steady = std::chrono::steady_clock::now() - steady_;
    return std::max(std::int64_t{ZorGetUsec()} - wallMs_,
                    std::int64_t{std::chrono::duration_cast<std::chrono::milliseconds>(steady).count()});
  }

  void restart() { *this = Stopwatch(ZorGetUsec()); }

 private:
  long wallMs_;
  std::chrono::steady_clock::time_point steady_ = std::chrono::steady_clock::now();
};

}  // namespace zor
