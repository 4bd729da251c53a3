#include "receiver/MulticastChannel.h"

#include <algorithm>
#include <limits>

#include "receiver/PacketReader.h"

namespace zor::receiver {
namespace {

// Bytes told by another channel that frames without a base must agree with, none disagreeing, to be given
// one.
constexpr int kBytesToAgree = 4;

}  // namespace

const MulticastFormat kVersion5Multicast{
    .encoding = Encoding::kVersion5,
    .syncGroup = wire::kVersion5SyncGroup,
    .evenMark = wire::kVersion5EvenMark,
    .oddMark = wire::kVersion5OddMark,
    .firstFrameOffset = wire::kVersion5FirstFrameOffset,
    .defaultPace = 30'000,
};

const MulticastFormat kVersion3Multicast{
    .encoding = Encoding::kVersion3,
    .syncGroup = wire::kVersion3MarkerGroup,
    .evenMark = wire::kVersion3EvenMark,
    .oddMark = wire::kVersion3OddMark,
    .firstFrameOffset = wire::kVersion3FirstFrameOffset,
    .defaultPace = 10'000,
};

MulticastChannel::MulticastChannel(const MulticastFormat& format)
    : format_(&format), clock_(format.defaultPace) {}

void MulticastChannel::restart() {
  clock_.restart();
  clearPending();
}

bool MulticastChannel::observe(const GroupOctets& group, int length, std::int64_t time,
                               PacketEvidence& evidence, const PacketEvidence& other) {
  const bool odd = group[0] == format_->oddMark;
  if (group == format_->syncGroup) {
    observeSync(length, evidence);
  } else if (odd || group[0] == format_->evenMark) {
    observeData(Frame{length, odd, group[1], group[2]}, time, evidence, other);
  } else {
    return false;
  }
  heard_ = true;
  return true;
}

std::optional<int> MulticastChannel::syncLength() const {
  if (!base_) return std::nullopt;
  return *base_ - format_->firstFrameOffset;
}

void MulticastChannel::observeSync(int length, PacketEvidence& evidence) {
  const int base = length + format_->firstFrameOffset;
  if (base_ == base) return;
  if (base_) evidence.beginAnotherRun();  // a run keeps its lengths
  base_ = base;
  releasePending(evidence);
}

void MulticastChannel::observeData(const Frame& frame, std::int64_t time, PacketEvidence& evidence,
                                   const PacketEvidence& other) {
  followTimetable(frame.length, time, evidence);
  if (!base_) {
    keepPending(frame, time);
    base_ = baseOfWholePacket();
    if (!base_) base_ = baseByEvidence(evidence, other);
    if (base_) releasePending(evidence);
    return;
  }
  const int index = frame.length - *base_;
  if (index < 0 || index >= wire::kMaxPairs || (index % 2 != 0) != frame.odd) {
    evidence.beginAnotherRun();
    base_.reset();
    return;
  }
  addPair(frame, time, evidence);
}

void MulticastChannel::followTimetable(int length, std::int64_t time, PacketEvidence& evidence) {
  // Without a base the lengths serve as indices: the clock only looks at differences.
  switch (clock_.observe(length, time)) {
    case CycleClock::Fit::kStarted:
      evidence.noteChannelBegin(time);
      break;
    case CycleClock::Fit::kNewCycle:
      evidence.noteBreak(clock_.cycleBegin(), RunContinuity::Break::kProvisional);
      break;
    case CycleClock::Fit::kBroken:
      evidence.noteBreak(clock_.cycleBegin(), RunContinuity::Break::kUnexplained);
      break;
    default:
      break;
  }
}

void MulticastChannel::addPair(const Frame& frame, std::int64_t time, PacketEvidence& evidence) const {
  const int index = 2 * (frame.length - *base_);
  evidence.add(index, frame.first, PacketEvidence::Source::kGroup, time);
  evidence.add(index + 1, frame.second, PacketEvidence::Source::kGroup, time);
}

void MulticastChannel::keepPending(const Frame& frame, std::int64_t time) {
  Pending& slot = pending_[static_cast<std::size_t>(frame.length % kPendingSlots)];
  if (slot.used && slot.frame != frame) clearPending();  // another run
  if (slot.used) {
    slot.lastSeen = time;
  } else {
    slot = Pending{true, frame, time, time};
  }
  wrapped_ = wrapped_ || frame.length < lastPendingLength_;
  lastPendingLength_ = frame.length;
}

void MulticastChannel::clearPending() {
  pending_.fill(Pending());
  wrapped_ = false;
  lastPendingLength_ = 0;
}

void MulticastChannel::releasePending(PacketEvidence& evidence) {
  for (const Pending& slot : pending_) {
    const int index = slot.frame.length - *base_;
    if (!slot.used || index < 0 || index >= wire::kMaxPairs || (index % 2 != 0) != slot.frame.odd) continue;
    addPair(slot.frame, slot.firstSeen, evidence);
    if (slot.lastSeen != slot.firstSeen) addPair(slot.frame, slot.lastSeen, evidence);
  }
  clearPending();
}

std::optional<int> MulticastChannel::baseOfWholePacket() const {
  if (!wrapped_) return std::nullopt;  // frames before the first one heard may be missing
  int first = std::numeric_limits<int>::max();
  int count = 0;
  for (const Pending& slot : pending_) {
    if (!slot.used) continue;
    first = std::min(first, slot.frame.length);
    ++count;
  }
  if (count < 2 || count > wire::kMaxPairs) return std::nullopt;
  std::array<std::uint8_t, wire::kMaxPacketBytes> packet{};
  for (int index = 0; index < count; ++index) {
    const Pending& slot = pending_[static_cast<std::size_t>((first + index) % kPendingSlots)];
    if (!slot.used || slot.frame.length != first + index || slot.frame.odd != (index % 2 != 0))
      return std::nullopt;
    packet[static_cast<std::size_t>(2 * index)] = slot.frame.first;
    packet[static_cast<std::size_t>(2 * index + 1)] = slot.frame.second;
  }
  const auto fields = readHeader(format_->encoding, packet);
  if (!fields || (fields->packetLength + 1) / 2 != count) return std::nullopt;
  if (!crcHolds(format_->encoding, *fields, packet)) return std::nullopt;
  return first;
}

std::optional<int> MulticastChannel::baseByEvidence(const PacketEvidence& evidence,
                                                    const PacketEvidence& other) const {
  if (evidence.knownCount() + other.knownCount() < kBytesToAgree) return std::nullopt;
  const ToldBytes told = bytesTold(format_->encoding, evidence, other);
  int longest = 0;
  for (const Pending& slot : pending_) longest = std::max(longest, slot.frame.length);
  std::optional<int> found;
  for (int base = longest - wire::kMaxPairs + 1; base <= longest; ++base) {
    if (agreement(base, told) < kBytesToAgree) continue;
    if (found) return std::nullopt;
    found = base;
  }
  return found;
}

int MulticastChannel::agreement(int base, const ToldBytes& told) const {
  int agreed = 0;
  for (const Pending& slot : pending_) {
    if (!slot.used) continue;
    const int index = slot.frame.length - base;
    if (index < 0 || (index % 2 != 0) != slot.frame.odd) return -1;
    const auto& first = told[static_cast<std::size_t>(2 * index)];
    const auto& second = told[static_cast<std::size_t>(2 * index + 1)];
    if ((first && *first != slot.frame.first) || (second && *second != slot.frame.second)) return -1;
    agreed += (first ? 1 : 0) + (second ? 1 : 0);
  }
  return agreed;
}

}  // namespace zor::receiver
