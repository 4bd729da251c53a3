#include "receiver/decoder/Breaks.h"

namespace zor::receiver {

void noteFit(const CycleClock& clock, CycleClock::Fit fit, Source source, PacketEvidence& evidence) {
  const Moment start = momentOf(clock.cycleStart());
  switch (fit) {
    case CycleClock::Fit::started:
      if (source == Source::group) evidence.noteBreak(source, start, true);
      break;
    case CycleClock::Fit::newCycle:
      evidence.noteBreak(source, start, true);
      break;
    case CycleClock::Fit::broken:
      evidence.noteBreak(source, start, false);
      break;
    case CycleClock::Fit::timeless:
    case CycleClock::Fit::onGrid:
    case CycleClock::Fit::nextCycle:
    case CycleClock::Fit::outlier:
      break;
  }
}

}  // namespace zor::receiver
