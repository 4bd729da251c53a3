#include "receiver/analysis/CycleMeter.h"

#include <algorithm>

namespace zor::receiver {
namespace {

constexpr std::int64_t kMicrosecondsPerMs = 1000;

/// No cycle takes longer, whatever the pacing; after more time a count of what was sent would be a guess.
constexpr std::int64_t kMaxSilence = 60'000'000;

/// Until the length of a cycle is known, the same number this soon is the same frame sent again.
constexpr std::int64_t kMaxRepeatWithin = 200'000;

/// A buffer releases its frames close together and then waits. Some senders are as fast, but do not wait in
/// the middle of a cycle.
constexpr std::size_t kBurstMs = 4;
constexpr double kBurstShare = 0.3;
constexpr std::size_t kHoldMs = 20;
constexpr double kHoldShare = 0.04;

}  // namespace

void DurationCounts::add(std::int64_t microseconds) {
  const std::int64_t ms =
      (std::max<std::int64_t>(microseconds, 0) + kMicrosecondsPerMs / 2) / kMicrosecondsPerMs;
  ++counts_[static_cast<std::size_t>(std::min<std::int64_t>(ms, kBuckets - 1))];
  ++count_;
}

std::optional<double> DurationCounts::medianMs() const {
  if (count_ == 0) return std::nullopt;
  std::uint64_t below = 0;
  std::size_t bucket = 0;
  while ((below += counts_[bucket]) * 2 < count_) ++bucket;
  return static_cast<double>(bucket);
}

double DurationCounts::shareBelow(std::size_t milliseconds) const {
  std::uint64_t below = 0;
  for (std::size_t bucket = 0; bucket < std::min(milliseconds, kBuckets); ++bucket) below += counts_[bucket];
  return count_ == 0 ? 0 : static_cast<double>(below) / static_cast<double>(count_);
}

std::vector<std::uint32_t> DurationCounts::histogram() const {
  const auto last = std::find_if(counts_.rbegin(), counts_.rend(), [](auto count) { return count > 0; });
  return {counts_.begin(), last.base()};
}

void CycleMeter::observe(int number, std::int64_t time) {
  const std::int64_t elapsed = time - lastTime_;
  if (!begun_ || elapsed < 0 || elapsed > kMaxSilence) {
    begin(number);
  } else {
    const std::int64_t repeatWithin = period_ == 0 ? kMaxRepeatWithin : period_ / 2;
    if (number == last_ && elapsed < repeatWithin) {
      ++repeats_;
      return;
    }
    follow(number, time);
  }
  sightingOf(number) = {time, lastCycle_};
  last_ = number;
  lastTime_ = time;
}

void CycleMeter::renumber() {
  begun_ = false;
}

void CycleMeter::describe(ChannelReport& report) const {
  report.cycles = cycles_;
  if (sent_ > 1) report.loss = 1 - static_cast<double>(heard_) / static_cast<double>(sent_);
  report.intervalMs = steps_.medianMs();
  report.inBursts =
      steps_.shareBelow(kBurstMs) >= kBurstShare && 1 - steps_.shareBelow(kHoldMs) >= kHoldShare;
}

void CycleMeter::begin(int number) {
  if (!begun_) {
    lowest_ = highest_ = number;
    sightings_.fill({});
  }
  begun_ = true;
  lowest_ = std::min(lowest_, number);
  highest_ = std::max(highest_, number);
  ++heard_;
  ++sent_;
  ++cycles_;
  ++lastCycle_;
}

void CycleMeter::follow(int number, std::int64_t time) {
  lowest_ = std::min(lowest_, number);
  highest_ = std::max(highest_, number);
  const std::int64_t cycle = cycleOf(number, time);
  const std::int64_t passed = cycle - lastCycle_;
  ++heard_;
  sent_ += static_cast<std::uint64_t>(passed * (highest_ - lowest_ + 1) + number - last_);
  cycles_ += static_cast<unsigned>(passed);
  if (passed == 0 && number == last_ + 1) steps_.add(time - lastTime_);
  lastCycle_ = cycle;
}

/// The cycle that this number is of: as many periods after it was last heard as the time says.
std::int64_t CycleMeter::cycleOf(int number, std::int64_t time) {
  const std::int64_t earliest = lastCycle_ + (number > last_ ? 0 : 1);
  const Sighting& seen = sightingOf(number);
  const std::int64_t since = time - seen.time;
  if (seen.cycle < 0 || since <= 0 || since > kMaxSilence) return earliest;
  adjustPeriod(since);
  return std::max(earliest, seen.cycle + (since + period_ / 2) / period_);
}

/// `measured` is one period or several.
void CycleMeter::adjustPeriod(std::int64_t measured) {
  const bool isShorter = measured < period_ * 3 / 5;
  if (period_ == 0 || isShorter) {
    period_ = measured;
  } else if (measured < period_ * 3 / 2) {
    period_ += (measured - period_) / 8;
  }
}

}  // namespace zor::receiver
