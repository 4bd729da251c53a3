#include "receiver/decoder/BroadcastBase.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

constexpr int kMaxVotes = 8;

/// The step from a last value of 255 to sync 1 is the same as that from sync 2 to sync 3, but between the
/// former two lies the pause between cycles.
constexpr std::int64_t kSync3Within = 100'000;

}  // namespace

void BroadcastBase::restart() {
  votes_ = std::min(votes_, 1);  // The next run may have another base.
  previousLength_ = -1;
  shortest_ = -1;
  longest_ = -1;
}

bool BroadcastBase::observe(int length, std::int64_t time) {
  const int step = length - previousLength_;
  const bool first = previousLength_ < 0;
  const std::int64_t elapsed = time - previousTime_;
  shortest_ = first ? length : std::min(shortest_, length);
  longest_ = std::max(longest_, length);
  previousLength_ = length;
  previousTime_ = time;
  if (first) return false;
  if (step == wire::kSync2Offset) return vote(length - step, 2);
  if (step == wire::kSync3Offset - wire::kSync2Offset && elapsed < kSync3Within) {
    return vote(length - wire::kSync3Offset, 1);
  }
  if (!base_ && longest_ - shortest_ == wire::kSync2Offset) return vote(shortest_, 1);
  return false;
}

bool BroadcastBase::vote(int candidate, int weight) {
  if (base_ == candidate) {
    votes_ = std::min(votes_ + weight, kMaxVotes);
    return false;
  }
  votes_ -= weight;
  if (base_ && votes_ > 0) return false;
  base_ = candidate;
  votes_ = weight;
  return true;
}

}  // namespace zor::receiver
