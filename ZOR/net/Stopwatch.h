#pragma once

#include <cstdint>

#include "ZOR/net/Clock.h"

namespace zor {

/// Reading of the monotonic clock, milliseconds.
std::int64_t steadyMs();

/// Milliseconds since a moment at which `ZorGetUsec` read `wallStartMs` and `steadyMs` read `steadyStartMs`.
/// The suite's clock steps with the wall clock: a step forward counts, but after a step back the monotonic
/// clock counts on, so that no worker waits or runs longer than it should.
std::int64_t elapsedMs(long wallStartMs, std::int64_t steadyStartMs);

/// Milliseconds since a reading of the suite's clock, as `elapsedMs` counts them.
class Stopwatch {
 public:
  /// Starts at `startedMs`, a `ZorGetUsec` reading.
  explicit Stopwatch(long startedMs) : wallStartMs_(startedMs) {}

  std::int64_t elapsedMs() const { return zor::elapsedMs(wallStartMs_, steadyStartMs_); }

  void restart() { *this = Stopwatch(ZorGetUsec()); }

 private:
  long wallStartMs_;
  std::int64_t steadyStartMs_ = steadyMs();
};

}  // namespace zor
