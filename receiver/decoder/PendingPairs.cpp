#include "receiver/decoder/PendingPairs.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// A base takes this many bytes known from other channels that the frames agree with, and none that
/// disagrees.
constexpr int kBytesToAgree = 4;
constexpr int kBytesToAgreeIfLikely = 2;

bool isOdd(int index) {
  return index % 2 != 0;
}

}  // namespace

void PendingPairs::keep(const GroupPair& pair, std::int64_t time) {
  Kept& slot = frames_[static_cast<std::size_t>(pair.length) % kSlots];
  const bool otherRun = slot.used && slot.pair != pair;
  const bool tooFar =
      !empty() && std::max(longest_, pair.length) - std::min(shortest_, pair.length) >= wire::kMaxPairs;
  if (otherRun || tooFar) clear();
  if (slot.used) {
    slot.lastSeen = time;
  } else {
    slot = Kept{true, pair, time, time};
  }
  wrapped_ = wrapped_ || pair.length < latest_;
  latest_ = pair.length;
  shortest_ = shortest_ == kNone ? pair.length : std::min(shortest_, pair.length);
  longest_ = std::max(longest_, pair.length);
}

std::optional<KnownBytes> PendingPairs::bytesIf(int base) const {
  KnownBytes known;
  for (const Kept& slot : frames_) {
    if (!slot.used) continue;
    const int index = slot.pair.length - base;
    if (index < 0 || index >= wire::kMaxPairs || isOdd(index) != slot.pair.odd) return std::nullopt;
    const auto first = 2 * static_cast<std::size_t>(index);
    known[first] = slot.pair.first;
    known[first + 1] = slot.pair.second;
  }
  return known;
}

std::optional<int> PendingPairs::baseOfWholePacket(Encoding encoding) const {
  if (!wrapped_) return std::nullopt;  // Frames before the first one heard may be missing.
  const auto known = bytesIf(shortest_);
  if (!known) return std::nullopt;
  std::array<std::uint8_t, wire::kMaxPacketBytes> packet{};
  const auto length = static_cast<std::size_t>(2 * (longest_ - shortest_ + 1));
  for (std::size_t i = 0; i < length; ++i) {
    if (!(*known)[i]) return std::nullopt;
    packet[i] = *(*known)[i];
  }
  const auto fields = readHeader(encoding, packet);
  if (!fields || (fields->packetLength + 1) / 2 != longest_ - shortest_ + 1) return std::nullopt;
  if (!crcHolds(encoding, *fields, packet)) return std::nullopt;
  return shortest_;
}

std::optional<int> PendingPairs::baseByBytes(const KnownBytes& known, std::optional<int> likely,
                                             int packetLength) const {
  const bool endsThere = likely && longest_ - *likely == (packetLength - 1) / 2;
  if (packetLength != 0 && endsThere && agreement(*likely, known)) return likely;
  int best = 0;
  int second = 0;
  int bestBase = 0;
  for (int base = lowestBase(); base <= shortest_; ++base) {
    const int agreed = agreement(base, known).value_or(0);
    second = std::max(second, std::min(agreed, best));
    if (agreed <= best) continue;
    best = agreed;
    bestBase = base;
  }
  const bool enough = best >= (bestBase == likely ? kBytesToAgreeIfLikely : kBytesToAgree);
  const bool alone = bestBase == likely ? second < best : second < kBytesToAgree;
  if (!enough || !alone) return std::nullopt;
  return bestBase;
}

std::optional<int> PendingPairs::agreement(int base, const KnownBytes& known) const {
  const auto bytes = bytesIf(base);
  if (!bytes) return std::nullopt;
  int agreed = 0;
  for (std::size_t i = 0; i < known.size(); ++i) {
    if (!known[i] || !(*bytes)[i]) continue;
    if (*known[i] != *(*bytes)[i]) return std::nullopt;
    ++agreed;
  }
  return agreed;
}

}  // namespace zor::receiver
