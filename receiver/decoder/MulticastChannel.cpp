#include "receiver/decoder/MulticastChannel.h"

namespace zor::receiver {

const MulticastFormat kVersion5Multicast{
    .encoding = Encoding::version5,
    .syncGroup = wire::kVersion5SyncGroup,
    .evenMark = wire::kVersion5EvenMark,
    .oddMark = wire::kVersion5OddMark,
    .firstFrameOffset = wire::kVersion5FirstFrameOffset,
    .defaultPace = 30'000,
};

const MulticastFormat kVersion3Multicast{
    .encoding = Encoding::version3,
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
  pending_.clear();
}

bool MulticastChannel::observe(const GroupOctets& group, int length, std::int64_t time,
                               PacketEvidence& evidence) {
  const bool odd = group[0] == format_->oddMark;
  if (group == format_->syncGroup) {
    observeSync(length, evidence);
  } else if (odd || group[0] == format_->evenMark) {
    observeData(GroupPair{length, odd, group[1], group[2]}, time, evidence);
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
  if (base_) evidence.beginAnotherRun();  // A run keeps its lengths.
  beginWithBase(base, evidence);
}

void MulticastChannel::observeData(const GroupPair& pair, std::int64_t time, PacketEvidence& evidence) {
  // Without a base the lengths serve as indices, as the clock looks at differences only.
  evidence.noteTimetable(clock_, clock_.observe(pair.length, time));
  if (!base_) {
    pending_.keep(pair, time);
    if (const auto base = pending_.baseOfWholePacket(format_->encoding)) beginWithBase(*base, evidence);
    return;
  }
  const int index = pair.length - *base_;
  if (index < 0 || index >= wire::kMaxPairs || (index % 2 != 0) != pair.odd) {
    evidence.beginAnotherRun();
    base_.reset();
    return;
  }
  addPair(pair, time, evidence);
}

void MulticastChannel::findBase(PacketEvidence& evidence, const PacketEvidence& other,
                                std::optional<int> likelySyncLength, int packetLength) {
  if (base_ || pending_.empty() || evidence.knownCount() + other.knownCount() == 0) return;
  std::optional<int> likely;
  if (likelySyncLength) likely = *likelySyncLength + format_->firstFrameOffset;
  const auto base =
      pending_.baseByBytes(knownBytes(format_->encoding, evidence, other), likely, packetLength);
  if (base) beginWithBase(*base, evidence);
}

void MulticastChannel::adoptSyncLength(int syncLength, PacketEvidence& evidence) {
  if (!base_) beginWithBase(syncLength + format_->firstFrameOffset, evidence);
}

void MulticastChannel::noteTimeless(PacketEvidence& evidence) {
  if (clock_.timeless()) return;
  clock_.noteTimeless();
  evidence.excuseBreaks(clock_);
}

void MulticastChannel::addPair(const GroupPair& pair, std::int64_t time, PacketEvidence& evidence) const {
  const int index = 2 * (pair.length - *base_);
  evidence.add(index, pair.first, PacketEvidence::Source::group, time);
  evidence.add(index + 1, pair.second, PacketEvidence::Source::group, time);
}

void MulticastChannel::beginWithBase(int base, PacketEvidence& evidence) {
  base_ = base;
  if (pending_.bytesIf(base)) {
    for (const PendingPairs::Kept& kept : pending_.frames()) {
      if (!kept.used) continue;
      addPair(kept.pair, kept.firstSeen, evidence);
      if (kept.lastSeen != kept.firstSeen) addPair(kept.pair, kept.lastSeen, evidence);
    }
  }
  pending_.clear();
}

}  // namespace zor::receiver
