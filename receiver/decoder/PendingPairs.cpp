#include "receiver/decoder/PendingPairs.h"

#include <algorithm>
#include <span>

#include "receiver/decoder/BaseSearch.h"

namespace zor::receiver {
namespace {

/// A base takes this many known bytes that the frames agree with, and none that disagrees.
constexpr int kBytesToAgree = 4;
constexpr int kBytesToAgreeIfLikely = 2;

}  // namespace

void PendingPairs::keep(const GroupPair& pair, Moment seen) {
  const auto length = static_cast<std::int16_t>(pair.length);
  Kept& kept = frames_[placeOf(length)];
  const bool tooFar =
      !empty() &&
      std::max<int>(longest_, pair.length) - std::min<int>(shortest_, pair.length) >= wire::kMaxPairs;
  const bool copied = copied_ || isCopyOfLatest(pair, seen);
  if (tooFar || (kept.used && !kept.carries(pair))) clear();
  copied_ = copied;
  kept = Kept{seen, pair.first, pair.second, pair.odd, true};
  const bool indexZeroIsOdd = (pair.length % 2 != 0) != pair.odd;
  (indexZeroIsOdd ? mayBeEven_ : mayBeOdd_) = false;
  wrapped_ = wrapped_ || length < latest_;
  latest_ = length;
  shortest_ = shortest_ == kNone ? length : std::min(shortest_, length);
  longest_ = std::max(longest_, length);
}

/// True when this can be the latest frame with another overhead, as an access point relays it.
bool PendingPairs::isCopyOfLatest(const GroupPair& pair, Moment seen) const {
  if (empty() || pair.length == latest_) return false;
  const Kept& latest = frames_[placeOf(latest_)];
  return latest.carries(pair) && seen - latest.seen < momentOf(wire::kRelayedWithin);
}

bool PendingPairs::mayBe(int base) const {
  if (empty() || copied_ || base > shortest_ || base < lowestBase()) return false;
  return base % 2 == 0 ? mayBeEven_ : mayBeOdd_;
}

std::optional<std::uint8_t> PendingPairs::byteIf(int base, int index) const {
  const int length = base + index / 2;
  if (empty() || length < shortest_ || length > longest_) return std::nullopt;
  const Kept& kept = frames_[placeOf(length)];
  if (!kept.used) return std::nullopt;
  return index % 2 == 0 ? kept.first : kept.second;
}

std::optional<int> PendingPairs::baseOfWholePacket(Encoding encoding) const {
  if (!wrapped_ || !mayBe(shortest_)) return std::nullopt;  // Frames before the first may be missing.
  std::array<std::uint8_t, wire::kMaxPacketBytes> packet{};
  const int end = 2 * (longest_ - shortest_ + 1);
  for (int index = 0; index < end; ++index) {
    const auto byte = byteIf(shortest_, index);
    if (!byte) return std::nullopt;
    packet[static_cast<std::size_t>(index)] = *byte;
  }
  const bool version5 = encoding == Encoding::version5;
  const auto lengths = packet.begin() + (version5 ? wire::kVersion5SsidLength : wire::kVersion3SsidLength);
  const auto head = version5 ? std::optional(packet[wire::kVersion5Head]) : std::nullopt;
  const auto fields = readFields(head, lengths[0], lengths[1]);
  if (!fields) return std::nullopt;
  const int length = fields->packetLength(encoding);
  if (2 * framesOf(length) != end) return std::nullopt;
  if (!crcHolds(encoding, std::span(packet).first(static_cast<std::size_t>(length)))) return std::nullopt;
  return shortest_;
}

std::optional<int> PendingPairs::baseByBytes(Encoding encoding, const PacketEvidence& evidence,
                                             std::optional<int> likely, int packetLength) const {
  const auto agreed = [&](int base) { return agreement(base, encoding, evidence); };
  const BestBase best = findBestBase(lowestBase(), shortest_, agreed);
  const bool isOpen = likely && mayBe(*likely) && agreed(*likely) >= 0;
  if (!isOpen) {
    if (best.agreed < kBytesToAgree || best.agreedElsewhere >= kBytesToAgree) return std::nullopt;
    return best.base;
  }
  const bool endsThere = packetLength != 0 && longest_ - *likely == framesOf(packetLength) - 1;
  const bool leads =
      best.base == *likely && best.agreed >= kBytesToAgreeIfLikely && best.agreedElsewhere < best.agreed;
  return endsThere || leads ? likely : std::nullopt;
}

int PendingPairs::agreement(int base, Encoding encoding, const PacketEvidence& evidence) const {
  if (!mayBe(base)) return -1;
  int agreed = 0;
  for (int index = 0; index < 2 * (longest_ - base + 1); ++index) {
    const auto byte = byteIf(base, index);
    const auto known = byte ? evidence.byteAt(encoding, index) : std::nullopt;
    if (!known) continue;
    if (*known != *byte) return -1;
    ++agreed;
  }
  return agreed;
}

}  // namespace zor::receiver
