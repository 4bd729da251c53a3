#include "simulator/Radio.h"

#include <cmath>

namespace zor::simulator {
namespace {

/// The mean length of a burst of losses: as long as a person who passes or a microwave oven keeps every frame
/// from getting through.
constexpr double kMeanBurstUs = 50'000;

}  // namespace

void LossModel::drawFirstState() {
  bad_ = random_.fraction() < conditions_.loss;
  changeUs_ = nextStay();
}

bool LossModel::loses(std::int64_t timeUs, std::int32_t length) {
  if (conditions_.byLength) {
    const double emptyFrames = static_cast<double>(airTimeUs(length)) / static_cast<double>(airTimeUs(0));
    return random_.fraction() >= std::pow(1 - conditions_.loss, emptyFrames);
  }
  if (!conditions_.bursts) return random_.fraction() < conditions_.loss;
  if (conditions_.loss <= 0) return false;
  while (changeUs_ <= static_cast<double>(timeUs)) {
    bad_ = !bad_;
    changeUs_ += nextStay();
  }
  return bad_;
}

double LossModel::nextStay() const {
  const double meanGoodUs = kMeanBurstUs * (1 - conditions_.loss) / conditions_.loss;
  return random_.exponential(bad_ ? kMeanBurstUs : meanGoodUs);
}

}  // namespace zor::simulator
