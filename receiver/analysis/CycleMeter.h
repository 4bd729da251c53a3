#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "receiver/analysis/Report.h"

namespace zor::receiver {

/// Counts durations in steps of a millisecond and knows their median.
class DurationCounts {
 public:
  void add(std::int64_t microseconds);

  std::uint64_t count() const { return count_; }
  std::optional<double> medianMs() const;

  /// The share of those below a limit, 0 to 1.
  double shareBelow(std::size_t milliseconds) const;

  /// How many there were of 0, 1, 2 ... milliseconds, up to the longest.
  std::vector<std::uint32_t> histogram() const;

 private:
  static constexpr std::size_t kBuckets = 512;  ///< The last one counts all that are longer.

  std::array<std::uint32_t, kBuckets> counts_{};
  std::uint64_t count_ = 0;
};

/// Counts the times from each frame to the next.
class GapCounts {
 public:
  void observe(std::int64_t time) {
    if (previous_) counts_.add(time - *previous_);
    previous_ = time;
  }
  const DurationCounts& counts() const { return counts_; }

 private:
  DurationCounts counts_;
  std::optional<std::int64_t> previous_;
};

/// Follows the numbered frames of one channel through its cycles, which all send the same numbers in the same
/// order: how many came, how many must have been sent, and how fast. Times are in microseconds; any are safe.
class CycleMeter {
 public:
  /// Takes a frame. `number` counts from anything.
  void observe(int number, std::int64_t time);

  /// From now on numbers count from something else.
  void renumber();

  std::uint64_t heard() const { return heard_; }
  std::uint64_t sent() const { return sent_; }  ///< From the first heard to the last.
  std::uint64_t repeats() const { return repeats_; }

  /// Fills in cycles, loss, interval and bursts.
  void describe(ChannelReport& report) const;

  /// True for the highest number heard.
  bool isLast(int number) const { return begun_ && number == highest_; }

 private:
  static constexpr int kMaxNumbers = 128;

  /// When a number was last heard, and in which cycle.
  struct Sighting {
    std::int64_t time = 0;
    std::int64_t cycle = -1;  ///< -1: never.
  };

  void begin(int number);
  void follow(int number, std::int64_t time);
  std::int64_t cycleOf(int number, std::int64_t time);
  void adjustPeriod(std::int64_t measured);
  Sighting& sightingOf(int number) {
    return sightings_[static_cast<std::size_t>(number & (kMaxNumbers - 1))];
  }

  std::uint64_t heard_ = 0;
  std::uint64_t sent_ = 0;
  std::uint64_t repeats_ = 0;
  unsigned cycles_ = 0;
  bool begun_ = false;
  int lowest_ = 0, highest_ = 0;
  int last_ = 0;
  std::int64_t lastTime_ = 0;
  std::int64_t lastCycle_ = 0;
  std::int64_t period_ = 0;  ///< Time from a number to the same one in the next cycle; 0 while unknown.
  std::array<Sighting, kMaxNumbers> sightings_;
  DurationCounts steps_;  ///< From one number to the next.
};

}  // namespace zor::receiver
