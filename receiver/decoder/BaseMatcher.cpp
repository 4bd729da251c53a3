#include "receiver/decoder/BaseMatcher.h"

#include <algorithm>

#include "receiver/decoder/BaseSearch.h"
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

void BaseMatcher::add(int length, int nextLength) {
  if (length <= nextLength) return;
  const auto end = successions_.begin() + static_cast<std::ptrdiff_t>(count_);
  const bool known = std::any_of(successions_.begin(), end, [=](const Succession& old) {
    return old.value == length && old.position == nextLength;
  });
  if (known) return;
  successions_[next_] = {static_cast<std::int16_t>(length), static_cast<std::int16_t>(nextLength)};
  next_ = (next_ + 1) % kMaxSuccessions;
  count_ = std::min(count_ + 1, kMaxSuccessions);
}

template <class ByteAt>
BaseMatcher::Verdict BaseMatcher::judge(int base, const ByteAt& byteAt) const {
  Verdict verdict;
  for (std::size_t i = 0; i < count_; ++i) {
    const int first = successions_[i].value - base;
    const int second = successions_[i].position - base;
    verdict.possible = verdict.possible && second >= wire::kSync1Offset && first <= wire::kSync2Offset;
    if (!isValue(first) || !isPosition(second)) continue;
    const int index = second - wire::kPositionOffset;
    verdict.lastIndex = std::max(verdict.lastIndex, index);
    const std::optional<std::uint8_t> byte = byteAt(index);
    if (!byte) continue;
    ++(*byte == first - wire::kValueOffset ? verdict.agreed : verdict.disagreed);
  }
  return verdict;
}

std::optional<int> BaseMatcher::match(const PacketEvidence& evidence, std::optional<int> likely) const {
  if (count_ == 0) return std::nullopt;
  if (likely && isLikelyBase(*likely, evidence)) return likely;
  int shortest = successions_[0].position;
  for (std::size_t i = 1; i < count_; ++i) shortest = std::min<int>(shortest, successions_[i].position);
  const int last = shortest - wire::kPositionOffset;
  const BestBase best = findBestBase(last - wire::kMaxPacketBytes + 1, last, [&](int base) {
    const Verdict verdict =
        judge(base, [&](int index) { return evidence.byteAt(Encoding::version5, index); });
    return verdict.possible && verdict.disagreed == 0 ? verdict.agreed : 0;
  });
  if (best.agreed < kEnough || best.agreedElsewhere >= kTooNear) return std::nullopt;
  return best.base;
}

bool BaseMatcher::isLikelyBase(int base, const PacketEvidence& evidence) const {
  const auto byteAt = [&](int index) { return evidence.byteAt(Encoding::version5, index); };
  const Verdict verdict = judge(base, byteAt);
  if (!verdict.possible) return false;
  const int length = evidence.packetLength();
  if (length != 0 && verdict.lastIndex == length - 1 && verdict.disagreed == 0) return true;
  if (verdict.agreed < kEnoughIfLikely || verdict.agreed < kAgreedToDisagreedIfLikely * verdict.disagreed)
    return false;
  const BestBase best =
      findBestBase(base - wire::kMaxPacketBytes, base + wire::kMaxPacketBytes, [&](int rival) {
        const Verdict other = judge(rival, byteAt);
        const bool fits = rival != base && other.possible && other.disagreed <= verdict.disagreed;
        return fits ? other.agreed : 0;
      });
  return best.agreed < verdict.agreed;
}

std::optional<int> BaseMatcher::commonBase(const PendingPairs& multicast) const {
  if (count_ == 0 || multicast.empty()) return std::nullopt;
  const BestBase best = findBestBase(multicast.lowestBase(), multicast.shortest(), [&](int base) {
    if (!multicast.mayBe(base)) return 0;
    const Verdict verdict = judge(base, [&](int index) { return multicast.byteIf(base, index); });
    return verdict.possible && verdict.disagreed == 0 && verdict.agreed >= kEnough ? verdict.agreed : 0;
  });
  if (best.agreed == 0 || best.agreedElsewhere > 0) return std::nullopt;
  return best.base;
}

}  // namespace zor::receiver
