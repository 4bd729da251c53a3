#include "receiver/BaseMatcher.h"

#include <algorithm>

#include "receiver/WireConstants.h"

namespace zor::receiver {
namespace {

// Two letters agree by chance once in some dozens, and there are a hundred bases to choose from.
constexpr int kEnough = 5;
constexpr int kEnoughIfLikely = 3;

// Texts like 12345678 fit in several places.
constexpr int kTooNear = 3;

constexpr int kConflict = -1;

}  // namespace

void BaseMatcher::addPair(int length, int nextLength) {
  if (length <= nextLength || count_ == kMostPairs) return;
  const auto end = pairs_.begin() + static_cast<std::ptrdiff_t>(count_);
  const bool known = std::any_of(pairs_.begin(), end, [=](const Pair& pair) {
    return pair.value == length && pair.position == nextLength;
  });
  if (!known) pairs_[count_++] = Pair{length, nextLength};
}

std::optional<int> BaseMatcher::match(const ToldBytes& told, std::optional<int> likely) const {
  if (count_ == 0) return std::nullopt;
  int shortest = pairs_[0].position;
  for (std::size_t i = 1; i < count_; ++i) shortest = std::min(shortest, pairs_[i].position);
  int best = 0;
  int second = 0;
  int bestBase = 0;
  for (int index = 0; index < wire::kMaxPacketBytes; ++index) {
    const int base = shortest - wire::kPositionOffset - index;
    const int agreed = agreement(base, told);
    if (agreed > best) {
      second = best;
      best = agreed;
      bestBase = base;
    } else {
      second = std::max(second, agreed);
    }
  }
  const int enough = likely == bestBase ? kEnoughIfLikely : kEnough;
  if (best < enough || second >= kTooNear) return std::nullopt;
  return bestBase;
}

int BaseMatcher::agreement(int base, const ToldBytes& told) const {
  int agreed = 0;
  for (std::size_t i = 0; i < count_; ++i) {
    const int index = pairs_[i].position - base - wire::kPositionOffset;
    const int value = pairs_[i].value - base - wire::kValueOffset;
    if (index >= wire::kMaxPacketBytes || value < 0 || value > 255) return kConflict;
    const auto& byte = told[static_cast<std::size_t>(index)];
    if (!byte) continue;
    if (*byte != value) return kConflict;
    ++agreed;
  }
  return agreed;
}

}  // namespace zor::receiver
