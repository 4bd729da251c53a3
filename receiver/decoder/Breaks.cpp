#include "receiver/decoder/Breaks.h"

namespace zor::receiver {
namespace {

/// The channels of one run start together. Even when 99 of 100 frames are lost, they rarely seem further
/// apart.
constexpr Moment kChannelsStartWithin = 1'000;

}  // namespace

void noteFit(const CycleClock& clock, CycleClock::Fit fit, Source source, PacketEvidence& evidence) {
  const Moment start = momentOf(clock.cycleStart());
  switch (fit) {
    case CycleClock::Fit::started: {
      const bool isLate = evidence.knownCount() > 0 && start - evidence.start() > kChannelsStartWithin;
      if (isLate || source == Source::group) evidence.noteBreak(source, start, !isLate);
      break;
    }
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
