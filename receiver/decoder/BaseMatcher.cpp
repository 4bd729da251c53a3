#include "receiver/decoder/BaseMatcher.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// Two letters agree by chance once in a few dozen cases, and there are a hundred bases to choose from.
constexpr int kEnough = 5;
constexpr int kEnoughIfLikely = 2;

/// In a burst, times do not show what was lost between two frames, so a value may be followed by a position
/// that is not its own.
constexpr int kAgreedToDisagreedIfLikely = 3;

/// Texts like 12345678 fit in several places.
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
  next_ = (next_ + 1) % kMaxPairs;
  count_ = std::min(count_ + 1, kMaxPairs);
}

std::optional<int> BaseMatcher::match(const KnownBytes& known, std::optional<int> likely,
                                      int packetLength) const {
  if (count_ == 0) return std::nullopt;
  if (likely && isLikelyBase(*likely, known, packetLength)) return likely;
  int shortest = pairs_[0].position;
  for (std::size_t i = 1; i < count_; ++i) shortest = std::min(shortest, pairs_[i].position);
  int best = 0;
  int second = 0;
  int bestBase = 0;
  for (int index = 0; index < wire::kMaxPacketBytes; ++index) {
    const int base = shortest - wire::kPositionOffset - index;
    const Verdict verdict = judge(base, known);
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

bool BaseMatcher::isLikelyBase(int base, const KnownBytes& known, int packetLength) const {
  const Verdict verdict = judge(base, known);
  if (!verdict.possible) return false;
  if (packetLength != 0 && verdict.lastIndex == packetLength - 1 && verdict.disagreed == 0) return true;
  return verdict.agreed >= kEnoughIfLikely &&
         verdict.agreed >= kAgreedToDisagreedIfLikely * verdict.disagreed && !hasRival(base, verdict, known);
}

bool BaseMatcher::hasRival(int base, const Verdict& verdict, const KnownBytes& known) const {
  for (int rival = base - wire::kMaxPacketBytes; rival <= base + wire::kMaxPacketBytes; ++rival) {
    const Verdict other = judge(rival, known);
    if (rival != base && other.possible && other.agreed >= verdict.agreed &&
        other.disagreed <= verdict.disagreed) {
      return true;
    }
  }
  return false;
}

bool BaseMatcher::confirms(int base, const KnownBytes& known) const {
  const Verdict verdict = judge(base, known);
  return verdict.possible && verdict.disagreed == 0 && verdict.agreed >= kEnough;
}

BaseMatcher::Verdict BaseMatcher::judge(int base, const KnownBytes& known) const {
  Verdict verdict;
  for (std::size_t i = 0; i < count_; ++i) {
    const int first = pairs_[i].value - base;
    const int second = pairs_[i].position - base;
    verdict.possible = verdict.possible && second >= wire::kSync1Offset && first <= wire::kSync2Offset;
    if (!isValue(first) || !isPosition(second)) continue;
    const int value = first - wire::kValueOffset;
    const int index = second - wire::kPositionOffset;
    verdict.lastIndex = std::max(verdict.lastIndex, index);
    const auto& byte = known[static_cast<std::size_t>(index)];
    if (!byte) continue;
    ++(*byte == value ? verdict.agreed : verdict.disagreed);
  }
  return verdict;
}

}  // namespace zor::receiver
