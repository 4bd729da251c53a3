#pragma once

#include <cstdint>

namespace zor::receiver {

/// Judges whether all the evidence gathered so far comes from one run of the sender.
///
/// A phone may stop a run and start another with other credentials at any moment. Bytes of both could make a
/// packet that was never sent, and the CRC lets one such packet in 256 pass. A break is any moment at which a
/// new run may have started. A break is healed when the CRC byte and a byte that distinguishes runs, both
/// first seen before it, are seen again after it with unchanged values. Text bytes without the CRC do not
/// heal it: a run that corrects a mistyped pass phrase repeats most of them.
class RunContinuity {
 public:
  enum class Break {
    provisional,    ///< A cycle started at a time that the timetable may yet explain.
    unexplained,    ///< A cycle or a channel started at a time that nothing explains.
    contradiction,  ///< A byte has a new value.
  };

  /// What the timetables say about the cycles heard: they explain every provisional break, they do not, or
  /// the last frame was out of place and may be the first of another run. Ordered from good to bad.
  enum class Timetable { explained, unexplained, interrupted };

  /// How well a byte with an unchanged value shows that the run is the same.
  enum class Agreement { nothing, text, crc };

  void noteBreak(std::int64_t time, Break kind);

  /// The times by which breaks were noticed have turned out to mean nothing: forgets the breaks, unless a
  /// contradiction is among them.
  void excuseBreaks();

  /// A byte first seen at `firstSeen` was seen again at `time`, with the same value.
  void noteAgreement(std::int64_t firstSeen, std::int64_t time, Agreement agreement);

  /// True when a byte last seen at `lastSeen` is of the run that is heard now.
  bool current(std::int64_t lastSeen, Timetable timetable) const;

  /// True when no break is open that the timetable does not explain.
  bool unbroken(Timetable timetable) const {
    return !open_ || (provisional_ && timetable == Timetable::explained);
  }

  void reset() { *this = RunContinuity(); }

 private:
  bool open_ = false;
  bool provisional_ = true;    ///< All of the open breaks.
  bool contradicted_ = false;  ///< Any of the open breaks.
  bool textAgrees_ = false;
  bool crcAgrees_ = false;
  std::int64_t earliest_ = 0;  ///< Of the open breaks.
  std::int64_t latest_ = 0;
};

}  // namespace zor::receiver
