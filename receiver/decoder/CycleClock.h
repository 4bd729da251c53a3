#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

namespace zor::receiver {

/// Follows the timetable of one channel of one sender.
///
/// A cycle sends its numbered frames at an even pace, each index one pace after the index before it, and
/// cycles follow each other with a constant period. The clock takes the index and the time of every frame
/// heard and says whether the frame continues the timetable. That is how a receiver knows which index a frame
/// without a number has, and that no other run has replaced the one it was listening to.
///
/// Times and paces are in microseconds. Any sequence of indices and times is safe.
class CycleClock {
 public:
  enum class Fit {
    started,    ///< First frame: nothing to compare with.
    onGrid,     ///< Where the current cycle puts it; any place when timeless().
    nextCycle,  ///< In a later cycle, where the known period puts it.
    newCycle,   ///< Second frame of a cycle whose distance from the last one cannot be judged yet; or the
                ///< fourth off the grid in a row, before two frames have fitted each other.
    broken,     ///< Second frame of a cycle that the timetable does not explain; or the fourth off the grid.
    outlier,    ///< Off the grid; the next frames will show what it means.
    timeless,   ///< Times have just turned out to mean nothing, including all earlier ones.
  };

  /// `defaultPace` is the one that senders use unless they are configured otherwise. Where strays, frames
  /// that are not of the run, may be among those of the channel, more has to show that a buffer releases them
  /// in bursts.
  CycleClock(std::int64_t defaultPace, bool mayHaveStrays);

  /// Takes the next numbered frame.
  Fit observe(int index, std::int64_t time);

  /// Returns the index whose time is nearest, or nothing when the time is too far off the grid to say.
  std::optional<int> indexAt(std::int64_t time, std::int64_t tolerance) const;

  /// True when a frame of this index at this time continues the timetable, in this cycle or in a later one.
  bool fits(int index, std::int64_t time) const;

  /// The index that the timetable has at this time, in this cycle or in a later one; nothing when the time is
  /// too far off the grid to say.
  std::optional<int> indexInAnyCycle(std::int64_t time, std::int64_t tolerance) const;

  /// True once a frame was heard.
  bool started() const { return started_; }

  /// Where the current cycle puts this index.
  std::int64_t timeOf(int index) const { return referenceTime_ + (index - referenceIndex_) * pace_; }

  /// True when enough frames in a row fitted the grid to rely on indexAt().
  bool steady() const { return !timeless_ && streak_ >= kSteadyStreak; }

  /// True once there is no doubt that a buffer releases the frames in bursts, as an access point does while
  /// stations sleep. Until restart() their order holds and their times mean nothing. Only a silence longer
  /// than any pause of a run still counts as a break: a person needs longer to correct a pass phrase.
  bool timeless() const { return timeless_; }

  /// Another channel has shown that times mean nothing.
  void noteTimeless() { timeless_ = true; }

  /// Frames without an index were heard closer together than they are sent, which is a sign of a buffer. That
  /// outweighs four fitting frames.
  void noteBurst();

  /// The same of two frames only, of which one may be a stray.
  void noteCloseFrames();

  /// True when the last frame was an outlier.
  bool hasOutlier() const { return challenger_.has_value(); }

  /// True when the frame before the last one was an outlier and is of the run after all: it began a cycle, or
  /// it was late and is in its place by its index.
  bool hasSettledOutlier() const { return hasSettledOutlier_; }

  /// Index of the last frame.
  int lastIndex() const { return previousIndex_; }

  /// True when the cycles that could not be judged when they came (Fit::newCycle, Fit::outlier) lie a whole
  /// number of periods apart, where a period is `cycle`, the time that the frames of a cycle take, and
  /// `pause`.
  bool explainedBy(std::int64_t cycle, std::int64_t pause) const;

  /// Time of the first frame of the cycle that observe() last reported as started, newCycle or broken.
  std::int64_t cycleStart() const { return cycleFirstTime_; }

  /// Time of the latest frame that ended a silence longer than any pause of a run.
  std::optional<std::int64_t> silenceEnd() const { return silenceEnd_; }

  std::int64_t pace() const { return pace_; }

  /// How far off the grid a numbered frame may be.
  std::int64_t tolerance() const { return std::max(pace_ * 2 / 5, kMinTolerance); }

  /// Forgets the current cycle and the period, keeps the pace.
  void restart();

 private:
  /// An outlier that may be the first frame of another cycle.
  struct Challenger {
    int index;
    std::int64_t time;
    std::int64_t shift;  ///< Distance from the current cycle's grid.
    int outliers;        ///< In a row, including this one.
  };

  /// A broadcast takes the air for so long, and delays the frames after it.
  static constexpr std::int64_t kMinTolerance = 4'000;

  static constexpr int kSteadyStreak = 6;
  static constexpr int kLongestStreak = 12;

  Fit judge(int index, std::int64_t time);
  bool isMultiple(std::int64_t shift, std::int64_t period) const;
  void setPace(std::int64_t measured, int span);
  void beginCycle(int index, std::int64_t time);
  void follow(int index, std::int64_t time, std::int64_t residual);
  Fit observeTimeless(std::int64_t elapsed, std::int64_t time);
  void measureFromChallenger();
  Fit adoptChallenger(int index, std::int64_t time);
  Fit broken();
  void addUnevenness(int amount);
  void lengthenStreak();
  void shortenStreak();
  bool measurePace(int steps, std::int64_t elapsed);
  void judgeEvenness(std::int64_t pace, std::int64_t previousPace, bool isBetweenBursts);
  bool adoptPace(int index, std::int64_t time);

  std::int64_t pace_;
  int paceSpan_;  ///< Number of indices over which the pace was measured.
  int streak_ = 0;
  int referenceIndex_ = 0;
  std::int64_t referenceTime_ = 0;
  std::int64_t cycleFirstTime_ = 0;
  std::int64_t period_ = 0;
  std::optional<Challenger> challenger_;
  std::int64_t measuredPace_ = 0;
  std::optional<std::int64_t> silenceEnd_;
  std::int64_t previousTime_ = 0;
  int previousIndex_ = 0;
  int cycleFirstIndex_ = 0;
  int unevenness_ = 0;
  int breaks_ = 0;
  std::int16_t periodSteps_ = 0;  ///< From the frame before to the one that showed the period.
  bool mayHaveStrays_ : 1;
  bool wasLongStep_ : 1 = false;
  bool started_ : 1 = false;
  bool hasTimetable_ : 1 = false;  ///< Two frames have fitted each other.
  bool periodConfirmed_ : 1 = false;
  bool timeless_ : 1 = false;
  bool hasSettledOutlier_ : 1 = false;
};

}  // namespace zor::receiver
