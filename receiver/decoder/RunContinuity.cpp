#include "receiver/decoder/RunContinuity.h"

#include <algorithm>

namespace zor::receiver {

void RunContinuity::noteBreak(std::int64_t time, Break kind) {
  earliest_ = open_ ? std::min(earliest_, time) : time;
  latest_ = open_ ? std::max(latest_, time) : time;
  open_ = true;
  provisional_ = provisional_ && kind == Break::provisional;
  contradicted_ = contradicted_ || kind == Break::contradiction;
  textAgrees_ = false;
  crcAgrees_ = false;
}

void RunContinuity::excuseBreaks() {
  if (!contradicted_) reset();
}

void RunContinuity::noteAgreement(std::int64_t firstSeen, std::int64_t time, Agreement agreement) {
  if (!open_ || firstSeen >= earliest_ || time < latest_) return;
  textAgrees_ = textAgrees_ || agreement == Agreement::text;
  crcAgrees_ = crcAgrees_ || agreement == Agreement::crc;
  if (textAgrees_ && crcAgrees_) reset();
}

bool RunContinuity::current(std::int64_t lastSeen, Timetable timetable) const {
  if (timetable == Timetable::interrupted) return false;
  return unbroken(timetable) || lastSeen >= latest_;
}

}  // namespace zor::receiver
