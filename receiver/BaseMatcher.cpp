#include "receiver/BaseMatcher.h"

#include <algorithm>

#include "receiver/WireConstants.h"

namespace zor::receiver {
namespace {

// Two letters agree by chance once in some dozens, and there are a hundred bases to choose from.
constexpr int kEnough = 5;
constexpr int kEnoughIfLikely = 2;

// In a burst, what was lost between two frames cannot be told by their times, and a value may stand in front
// of a position that is not its own.
constexpr int kAgreedToDisagreedIfLikely = 3;

// Texts like 12345678 fit in several places.
constexpr int kTooNear = 3;

bool isPosition(int offset) {
  return offset >= wire::kPositionOffset && offset < wire::kValueOffset;
}

bool isValue(int offset) {
  return offset >= wire::kValueOffset && offset < wire::kSync2Offset;
}

}  // namespace

void BaseMatcher::addPair(int length, int nextLength) {
  if (length <= nextLength) return;
  const auto end = pairs_.begin() + static_cast<std::ptrdiff_t>(count_);
  const bool known = std::any_of(pairs_.begin(), end, [=](const Pair& pair) {
    return pair.value == length && pair.position == nextLength;
  });
  if (known) return;
  pairs_[next_] = Pair{length, nextLength};
  next_ = (next_ + 1) % kMostPairs;
  count_ = std::min(count_ + 1, kMostPairs);
}

std::optional<int> BaseMatcher::match(const ToldBytes& told, std::optional<int> likely,
                                      int packetLength) const {
  if (count_ == 0) return std::nullopt;
  if (likely && isLikelyBase(*likely, told, packetLength)) return likely;
  int shortest = pairs_[0].position;
  for (std::size_t i = 1; i < count_; ++i) shortest = std::min(shortest, pairs_[i].position);
  int best = 0;
  int second = 0;
  int bestBase = 0;
  for (int index = 0; index < wire::kMaxPacketBytes; ++index) {
    const int base = shortest - wire::kPositionOffset - index;
    const Verdict verdict = judge(base, told);
    const int agreed = verdict.possible && verdict.disagreed == 0 ? verdict.agreed : 0;
    if (agreed > best) {
      second = best;
      best = agreed;
      bestBase = base;
    } else {
      second = std::max(second, agreed);
    }
  }
  if (best < kEnough || second >= kTooNear) return std::nullopt;
  return bestBase;
}

bool BaseMatcher::isLikelyBase(int base, const ToldBytes& told, int packetLength) const {
  const Verdict verdict = judge(base, told);
  if (!verdict.possible) return false;
  if (packetLength != 0 && verdict.lastIndex == packetLength - 1 && verdict.disagreed == 0) return true;
  return verdict.agreed >= kEnoughIfLikely &&
         verdict.agreed >= kAgreedToDisagreedIfLikely * verdict.disagreed && !hasRival(base, verdict, told);
}

bool BaseMatcher::hasRival(int base, const Verdict& verdict, const ToldBytes& told) const {
  for (int rival = base - wire::kMaxPacketBytes; rival <= base + wire::kMaxPacketBytes; ++rival) {
    const Verdict other = judge(rival, told);
    if (rival != base && other.possible && other.agreed >= verdict.agreed &&
        other.disagreed <= verdict.disagreed) {
      return true;
    }
  }
  return false;
}

bool BaseMatcher::confirms(int base, const ToldBytes& told) const {
  const Verdict verdict = judge(base, told);
  return verdict.possible && verdict.disagreed == 0 && verdict.agreed >= kEnough;
}

BaseMatcher::Verdict BaseMatcher::judge(int base, const ToldBytes& told) const {
  Verdict verdict;
  for (std::size_t i = 0; i < count_; ++i) {
    const int first = pairs_[i].value - base;
    const int second = pairs_[i].position - base;
    verdict.possible = verdict.possible && second >= wire::kSync1Offset && first <= wire::kSync2Offset;
    if (!isValue(first) || !isPosition(second)) continue;
    const int value = first - wire::kValueOffset;
    const int index = second - wire::kPositionOffset;
    verdict.lastIndex = std::max(verdict.lastIndex, index);
    const auto& byte = told[static_cast<std::size_t>(index)];
    if (!byte) continue;
    ++(*byte == value ? verdict.agreed : verdict.disagreed);
  }
  return verdict;
}

}  // namespace zor::receiver
