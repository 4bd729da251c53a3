#include "receiver/decoder/CycleClock.h"

#include <algorithm>
#include <cstdlib>

namespace zor::receiver {
namespace {

/// The fastest named pace, less what jitter makes of it. Faster frames come from a buffer.
constexpr std::int64_t kMinPace = 2'700;
constexpr std::int64_t kMaxPace = 10'000'000;

/// A default pace counts as much as one that was measured over this many indices.
constexpr int kDefaultPaceSpan = 8;

/// A busy channel delays frames, some more than others, and may push this many in a row off the grid.
constexpr int kMaxOutliers = 3;

/// Whole cycles may be lost, but a frame that comes more than this many cycles later proves nothing.
constexpr std::int64_t kMaxCyclesApart = 64;

/// In a burst, indices follow each other at this pace at most, whatever the sender's pace is.
constexpr std::int64_t kMaxBurstPace = 10'000;

/// A step between bursts takes longer than those within. Where strays may have made it, it has to be longer
/// than a step of the usual pace.
constexpr std::int64_t kMinStepBetweenBursts = kMaxBurstPace;
constexpr std::int64_t kMinStepAmongStrays = 40'000;

/// The step from one burst to the next is at least this many times as long as a step within a burst.
constexpr std::int64_t kBurstContrast = 3;

/// Steps of the fastest pace vary, but they are rarely as short as this.
constexpr std::int64_t kCloseStep = 2'000;

/// Even steps speak against bursts; two close frames outweigh some of them, an uneven step many.
constexpr int kUnevennessOfBursts = 32;
constexpr int kUnevenStep = 16;
constexpr int kUnevenStepAmongStrays = 8;
constexpr int kCloseFrames = 4;

/// Buffers keep the order. An index below the one before it speaks against one, unless so much time lies
/// between them that another cycle may have begun. A cycle that begins within a burst counts too; then it
/// takes more bursts to show the buffer.
constexpr std::int64_t kDisorderWithin = 40'000;

/// Paces that differ by no more than this and an eighth are the same.
constexpr std::int64_t kPaceJitter = 1'000;

/// A frame that does not fit outweighs this many that fit.
constexpr int kStreakLost = 4;

/// A run that replaces another causes a break or two. This many mean that there is no timetable.
constexpr int kBreaksOfNoTimetable = 8;

/// A channel pauses longest while the other encoding is mixed in: 1.63 s for the longest packet. A buffer may
/// add 300 ms.
constexpr std::int64_t kLongestPause = 2'000'000;

/// True when frames of these indices lie within the length of one cycle, in this order: going round from the
/// first, the second comes before the third.
bool areInOrder(int first, int second, int third) {
  const int rises = (first < second ? 1 : 0) + (second < third ? 1 : 0) + (third <= first ? 1 : 0);
  return rises == 2;
}

bool isSamePace(std::int64_t measured, std::int64_t pace) {
  return std::abs(measured - pace) <= measured / 8 + kPaceJitter;
}

}  // namespace

CycleClock::CycleClock(std::int64_t defaultPace, bool mayHaveStrays)
    : pace_(defaultPace), paceSpan_(kDefaultPaceSpan), mayHaveStrays_(mayHaveStrays) {}

void CycleClock::restart() {
  started_ = false;
  hasTimetable_ = false;
  streak_ = 0;
  period_ = 0;
  periodConfirmed_ = false;
  challenger_.reset();
  measuredPace_ = 0;
  unevenness_ = 0;
  breaks_ = 0;
  silenceEnd_.reset();
  timeless_ = false;
  hasSettledOutlier_ = false;
}

void CycleClock::noteBurst() {
  const bool wasSteady = steady();
  shortenStreak();
  if (!wasSteady) addUnevenness(mayHaveStrays_ ? kUnevenStepAmongStrays : kUnevenStep);
}

void CycleClock::addUnevenness(int amount) {
  unevenness_ = std::min(unevenness_ + amount, kUnevennessOfBursts);
  timeless_ = timeless_ || unevenness_ >= kUnevennessOfBursts;
}

void CycleClock::noteCloseFrames() {
  if (!steady()) unevenness_ = std::min(unevenness_ + kCloseFrames, kUnevennessOfBursts);
}

void CycleClock::judgeEvenness(std::int64_t pace, std::int64_t previousPace, bool isBetweenBursts) {
  const auto [shorter, longer] = std::minmax(pace, previousPace);
  if (shorter < 0) return noteBurst();  // Time ran backwards.
  const bool uneven = shorter < kMaxBurstPace && longer > kBurstContrast * shorter;
  if (uneven && isBetweenBursts) {
    noteBurst();
  } else if (pace < kCloseStep) {
    if (!steady()) addUnevenness(kCloseFrames);
  } else if (pace >= kMinPace && unevenness_ > 0) {
    --unevenness_;
  }
}

CycleClock::Fit CycleClock::observe(int index, std::int64_t time) {
  const std::optional<Challenger> outlier = challenger_;
  const int lastOnGrid = referenceIndex_;
  const Fit fit = judge(index, time);
  const bool beganCycle = outlier && cycleFirstTime_ == outlier->time && cycleFirstIndex_ == outlier->index;
  hasSettledOutlier_ = beganCycle || (outlier && areInOrder(lastOnGrid, outlier->index, index));
  return fit;
}

CycleClock::Fit CycleClock::judge(int index, std::int64_t time) {
  const int steps = index - previousIndex_;
  const std::int64_t elapsed = time - previousTime_;
  previousIndex_ = index;
  previousTime_ = time;
  if (!started_) {
    started_ = true;
    streak_ = 1;
    beginCycle(index, time);
    return Fit::started;
  }
  if (elapsed > kLongestPause) silenceEnd_ = time;
  if (timeless_) return observeTimeless(elapsed, time);
  const bool paceRepeats = measurePace(steps, elapsed);
  if (timeless_) return Fit::timeless;
  if (paceRepeats && challenger_ && !hasTimetable_) measureFromChallenger();
  const std::int64_t residual = time - timeOf(index);
  if (index >= referenceIndex_ && std::abs(residual) <= tolerance()) {
    follow(index, time, residual);
    return Fit::onGrid;
  }
  if (period_ != 0 && isMultiple(residual, period_)) {
    periodConfirmed_ = true;
    lengthenStreak();
    beginCycle(index, time);
    return Fit::nextCycle;
  }
  if (paceRepeats && adoptPace(index, time)) return Fit::onGrid;
  if (challenger_ &&
      std::abs(time - challenger_->time - (index - challenger_->index) * pace_) <= tolerance()) {
    if (index > challenger_->index) return adoptChallenger(index, time);
    if (index == challenger_->index) return Fit::outlier;  // The same frame heard twice.
  }
  const int outliers = challenger_ ? challenger_->outliers + 1 : 1;
  if (outliers <= kMaxOutliers) {
    challenger_ = Challenger{index, time, residual, outliers};
    return Fit::outlier;
  }
  streak_ = 1;
  period_ = 0;
  periodConfirmed_ = false;
  beginCycle(index, time);
  return hasTimetable_ ? broken() : Fit::newCycle;
}

std::optional<int> CycleClock::indexAt(std::int64_t time, std::int64_t tolerance) const {
  const std::int64_t distance = time - referenceTime_;
  if (std::abs(distance) > kMaxPace * kMaxCyclesApart) return std::nullopt;
  const std::int64_t half = distance < 0 ? -pace_ / 2 : pace_ / 2;
  const std::int64_t steps = (distance + half) / pace_;
  if (std::abs(distance - steps * pace_) > tolerance) return std::nullopt;
  return static_cast<int>(referenceIndex_ + steps);
}

bool CycleClock::fits(int index, std::int64_t time) const {
  const std::int64_t residual = time - timeOf(index);
  return std::abs(residual) <= tolerance() || (period_ != 0 && isMultiple(residual, period_));
}

std::optional<int> CycleClock::indexInAnyCycle(std::int64_t time, std::int64_t tolerance) const {
  std::int64_t sinceFirst = time - timeOf(0);
  if (period_ != 0 && sinceFirst > 0) sinceFirst %= period_;
  return indexAt(timeOf(0) + sinceFirst, tolerance);
}

bool CycleClock::explainedBy(std::int64_t cycle, std::int64_t pause) const {
  const std::int64_t period = cycle + pause;
  if (period_ != 0 && period_ < cycle - tolerance()) return false;
  if (period_ != 0 && !periodConfirmed_ && !isMultiple(period_, period)) return false;
  return !challenger_ || isMultiple(challenger_->shift, period);
}

bool CycleClock::isMultiple(std::int64_t shift, std::int64_t period) const {
  if (period <= 0 || shift < period / 2) return false;
  const std::int64_t count = (shift + period / 2) / period;
  return count <= kMaxCyclesApart && std::abs(shift - count * period) <= tolerance();
}

/// Takes a pace that was measured over `span` indices.
void CycleClock::setPace(std::int64_t measured, int span) {
  const std::int64_t pace = std::clamp(measured, kMinPace, kMaxPace);
  if (period_ != 0 && !periodConfirmed_) period_ -= periodSteps_ * (pace - pace_);
  pace_ = pace;
  paceSpan_ = span;
}

void CycleClock::beginCycle(int index, std::int64_t time) {
  referenceIndex_ = cycleFirstIndex_ = index;
  referenceTime_ = cycleFirstTime_ = time;
  challenger_.reset();
}

void CycleClock::follow(int index, std::int64_t time, std::int64_t residual) {
  hasTimetable_ = hasTimetable_ || index > referenceIndex_;
  // A frame that does not fit between frames that do is the sign of a buffer that releases in bursts.
  if (challenger_) shortenStreak();
  lengthenStreak();
  challenger_.reset();
  const int span = index - cycleFirstIndex_;
  if (span > paceSpan_) setPace((time - cycleFirstTime_) / span, span);
  referenceIndex_ = index;
  referenceTime_ = time - residual * 3 / 4;  // A late frame moves the grid only a little.
}

/// A cycle of which one or two frames were heard does not show its pace. The next one does.
void CycleClock::measureFromChallenger() {
  setPace(measuredPace_, 1);
  challenger_->shift = challenger_->time - timeOf(challenger_->index);
  if (std::abs(challenger_->shift) <= tolerance()) challenger_.reset();
}

CycleClock::Fit CycleClock::adoptChallenger(int index, std::int64_t time) {
  const Challenger first = *challenger_;
  const int steps = first.index - referenceIndex_;
  const std::int64_t paceBefore = pace_;
  beginCycle(first.index, first.time);
  follow(index, time, 0);
  const std::int64_t sinceLastCycle = first.shift - steps * (pace_ - paceBefore);
  periodSteps_ = static_cast<std::int16_t>(steps);
  const std::int64_t previous = period_;
  periodConfirmed_ = previous != 0 && isMultiple(previous, sinceLastCycle);
  period_ = std::max<std::int64_t>(sinceLastCycle, 0);
  if (periodConfirmed_) return Fit::nextCycle;
  if (previous == 0 && period_ != 0) return Fit::newCycle;
  streak_ = 2;
  return broken();
}

CycleClock::Fit CycleClock::observeTimeless(std::int64_t elapsed, std::int64_t time) {
  if (elapsed <= kLongestPause) return Fit::onGrid;
  beginCycle(referenceIndex_, time);
  return Fit::broken;
}

void CycleClock::lengthenStreak() {
  streak_ = std::min(streak_ + 1, kLongestStreak);
  if (streak_ == kLongestStreak) breaks_ = unevenness_ = 0;
}

void CycleClock::shortenStreak() {
  streak_ = std::max(streak_ - kStreakLost, 0);
}

CycleClock::Fit CycleClock::broken() {
  if (++breaks_ < kBreaksOfNoTimetable) return Fit::broken;
  timeless_ = true;
  return Fit::timeless;
}

bool CycleClock::measurePace(int steps, std::int64_t elapsed) {
  if (steps < 0 && elapsed < kDisorderWithin) unevenness_ = std::max(unevenness_ - kUnevenStep, 0);
  if (steps <= 0) return false;
  const std::int64_t measured = elapsed / steps;
  const bool repeats = isSamePace(measured, measuredPace_);
  const bool isLongStep = elapsed >= (mayHaveStrays_ ? kMinStepAmongStrays : kMinStepBetweenBursts);
  if (measuredPace_ > 0) judgeEvenness(measured, measuredPace_, isLongStep || wasLongStep_);
  measuredPace_ = measured;
  wasLongStep_ = isLongStep;
  return repeats && measured >= kMinPace && measured <= kMaxPace;
}

bool CycleClock::adoptPace(int index, std::int64_t time) {
  const int span = index - cycleFirstIndex_;
  if (span < 2 || std::abs(time - cycleFirstTime_ - span * measuredPace_) > measuredPace_ * 2 / 5)
    return false;
  setPace((time - cycleFirstTime_) / span, span);
  hasTimetable_ = true;
  streak_ = 2;
  challenger_.reset();
  referenceIndex_ = index;
  referenceTime_ = time;
  return true;
}

}  // namespace zor::receiver
