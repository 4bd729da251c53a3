#pragma once

#include <cstdint>

namespace zor::receiver {

/// Judges whether all the evidence gathered so far comes from one run of the sender.
///
/// A phone may stop a run and start another with other credentials at any moment. Bytes of both could make a
/// packet that was never sent, and the CRC lets one such packet in 256 pass. A break is any moment at which a
/// new run may have begun. A break is healed when the CRC byte and a byte that tells runs apart, both first
/// seen before it, are seen again after it with unchanged values. Texts alone do not heal: a run that
/// corrects a mistyped pass phrase repeats most of them.
class RunContinuity {
 public:
  enum class Break {
    kProvisional,    ///< A cycle began at a time that the timetable may yet explain.
    kUnexplained,    ///< A cycle or a channel began at a time that nothing explains.
    kContradiction,  ///< A byte has got another value.
  };

  /// What the timetables say of the cycles heard: they explain every provisional break, they do not, or the
  /// last frame was out of place and may be the first of another run. Ordered from good to bad.
  enum class Timetable { kExplained, kUnexplained, kInterrupted };

  /// How much an agreement tells one run from another.
  enum class Agreement { kNothing, kText, kCrc };

  void noteBreak(std::int64_t time, Break kind);

  /// The times by which breaks were noticed have turned out to mean nothing: forgets them, unless a byte has
  /// contradicted.
  void excuseBreaks();

  /// A byte first seen at firstSeen was seen again with its old value.
  void noteAgreement(std::int64_t firstSeen, std::int64_t time, Agreement agreement);

  /// True when a byte last seen at lastSeen is of the run that is being heard now.
  bool current(std::int64_t lastSeen, Timetable timetable) const;

  /// True when no break is open that the timetable does not explain.
  bool unbroken(Timetable timetable) const {
    return !open_ || (provisional_ && timetable == Timetable::kExplained);
  }

  void reset() { *this = RunContinuity(); }

 private:
  bool open_ = false;
  bool provisional_ = true;    // all of the open breaks
  bool contradicted_ = false;  // any of the open breaks
  bool textAgrees_ = false;
  bool crcAgrees_ = false;
  std::int64_t earliest_ = 0;
  std::int64_t latest_ = 0;
};

}  // namespace zor::receiver
