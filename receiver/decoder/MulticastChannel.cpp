#include "receiver/decoder/MulticastChannel.h"

#include <cstdlib>

#include "receiver/decoder/Breaks.h"

namespace zor::receiver {
namespace {

/// After a sync frame of another length, this many must agree: two copies of each frame, with two overheads,
/// may come from an access point that holds one of them.
constexpr std::uint8_t kSyncsToAgree = 3;

}  // namespace

const MulticastFormat kVersion5Multicast{
    .encoding = Encoding::version5,
    .syncGroup = wire::kVersion5SyncGroup,
    .evenMark = wire::kVersion5EvenMark,
    .oddMark = wire::kVersion5OddMark,
    .firstFrameOffset = wire::kVersion5FirstFrameOffset,
    .defaultPace = wire::kVersion5MulticastPace,
};

const MulticastFormat kVersion3Multicast{
    .encoding = Encoding::version3,
    .syncGroup = wire::kVersion3MarkerGroup,
    .evenMark = wire::kVersion3EvenMark,
    .oddMark = wire::kVersion3OddMark,
    .firstFrameOffset = wire::kVersion3FirstFrameOffset,
    .defaultPace = wire::kVersion3Pace,
};

MulticastChannel::MulticastChannel(const MulticastFormat& format)
    : format_(&format), clock_(format.defaultPace, false) {}

void MulticastChannel::restart() {
  clock_.restart();
  pending_.clear();
  lastByte_ = LastByte();
  heard_ = false;
}

void MulticastChannel::noteTimeless() {
  clock_.noteTimeless();
  lastByte_.sighting.isOutlier = false;
}

bool MulticastChannel::carries(const MulticastFormat& format, const GroupOctets& group) {
  return group.mark == format.evenMark || group.mark == format.oddMark || group == format.syncGroup;
}

void MulticastChannel::observe(const GroupFrame& frame, PacketEvidence& evidence) {
  heard_ = true;
  if (frame.group == format_->syncGroup) {
    observeSync(frame.length, evidence);
  } else {
    observeData(frame, evidence);
  }
}

bool MulticastChannel::findLength(GroupFrame& frame, int step, bool areHeld, const PacketEvidence& evidence) {
  const bool isSync = frame.group == format_->syncGroup;
  if (!base_) return isSync && findSyncLength(frame, step);
  const int shorter = frame.length - step;
  const bool mayBeShorter = isPossible(frame.group, frame.length, areHeld, evidence);
  const bool mayBeLonger = isPossible(frame.group, shorter, areHeld, evidence);
  if (!mayBeShorter && !mayBeLonger) return false;
  bool isLonger = !mayBeShorter;
  if (mayBeShorter && mayBeLonger) {
    if (areHeld || !clock_.steady()) return false;
    isLonger = clock_.fits(shorter, frame.time);
    if (isLonger == clock_.fits(frame.length, frame.time)) return false;
    frame.source = Source::length;
  }
  if (isLonger) frame.length = shorter;
  return true;
}

/// Two sync frames of which only one copy each was heard show both lengths.
bool MulticastChannel::findSyncLength(GroupFrame& frame, int step) {
  const int apart = singleSync_ < 0 ? 0 : frame.length - singleSync_;
  singleSync_ = static_cast<std::int16_t>(frame.length);
  if (apart == step) frame.length -= step;
  return std::abs(apart) == step;
}

/// True when a frame to this group may have this length, as far as the packet is known.
bool MulticastChannel::isPossible(const GroupOctets& group, int length, bool areHeld,
                                  const PacketEvidence& evidence) const {
  if (group == format_->syncGroup) return length == *syncLength();
  const auto fields = evidence.fields(format_->encoding);
  const int frames = fields ? framesOf(fields->packetLength(format_->encoding)) : wire::kMaxPairs;
  const int index = length - *base_;
  if (index < 0 || index >= frames || (index % 2 != 0) != (group.mark == format_->oddMark)) return false;
  // Before the copies are known to be held, two of other frames may have been paired. What that made up is
  // rarely seen twice.
  const int sightings = areHeld ? 2 : 1;
  return !evidence.groupExcludes(pieceOf(format_->encoding, 2 * index), group.first, sightings);
}

std::optional<int> MulticastChannel::syncLength() const {
  if (!base_) return std::nullopt;
  return *base_ - format_->firstFrameOffset;
}

void MulticastChannel::observeSync(int length, PacketEvidence& evidence) {
  const int base = length + format_->firstFrameOffset;
  if (base_ == base) {
    if (syncsToAgree_ > 0) --syncsToAgree_;
    return;
  }
  if (base_) {  // A run keeps its lengths.
    evidence.restart();
    syncsToAgree_ = kSyncsToAgree;
  }
  beginWithBase(base, evidence);
}

void MulticastChannel::observeData(const GroupFrame& frame, PacketEvidence& evidence) {
  const GroupPair pair{frame.length, frame.group.mark == format_->oddMark, frame.group.first,
                       frame.group.second};
  const bool isOutlier = showToClock(frame, evidence);
  if (!base_) {
    pending_.keep(pair, momentOf(frame.time));
    if (const auto base = pending_.baseOfWholePacket(format_->encoding)) beginWithBase(*base, evidence);
    return;
  }
  const int index = pair.length - *base_;
  if (index < 0 || index >= wire::kMaxPairs || (index % 2 != 0) != pair.odd) {
    evidence.restart();
    base_.reset();
    return;
  }
  addPair(pair, {momentOf(frame.time), frame.source, isOutlier}, evidence);
}

/// Returns whether the frame is an outlier.
bool MulticastChannel::showToClock(const GroupFrame& frame, PacketEvidence& evidence) {
  const int previous = clock_.lastIndex();
  // Without a base the lengths serve as indices, as the clock looks at differences only.
  const CycleClock::Fit fit = clock_.observe(frame.length, frame.time);
  noteFit(clock_, fit, Source::group, evidence);
  if (clock_.hasSettledOutlier()) settle(previous, evidence);
  return fit == CycleClock::Fit::outlier;
}

/// The outlier of this length is of the run.
void MulticastChannel::settle(int length, PacketEvidence& evidence) {
  if (!base_ || length < *base_) return;
  const int index = 2 * (length - *base_);
  evidence.settle(pieceOf(format_->encoding, index));
  evidence.settle(pieceOf(format_->encoding, index + 1));
  if (lastByte_.index == index + 1) lastByte_.sighting.isOutlier = false;
}

void MulticastChannel::findBase(PacketEvidence& evidence, std::optional<int> likelySyncLength) {
  if (base_ || pending_.empty() || evidence.knownCount() == 0) return;
  std::optional<int> likely;
  if (likelySyncLength) likely = *likelySyncLength + format_->firstFrameOffset;
  const auto fields = evidence.fields(format_->encoding);
  const int length = fields ? fields->packetLength(format_->encoding) : 0;
  if (const auto base = pending_.baseByBytes(format_->encoding, evidence, likely, length))
    beginWithBase(*base, evidence);
}

void MulticastChannel::adoptSyncLength(int syncLength, PacketEvidence& evidence) {
  if (!base_) beginWithBase(syncLength + format_->firstFrameOffset, evidence);
}

void MulticastChannel::addByte(int index, std::uint8_t value, const Sighting& sighting,
                               PacketEvidence& evidence) const {
  evidence.add(pieceOf(format_->encoding, index), value, sighting);
}

void MulticastChannel::addPair(const GroupPair& pair, const Sighting& sighting, PacketEvidence& evidence) {
  const int index = 2 * (pair.length - *base_);
  addByte(index, pair.first, sighting, evidence);
  if (format_->encoding == Encoding::version5) {
    addByte(index + 1, pair.second, sighting, evidence);
    if (sighting.source == Source::group) evidence.noteLastByte(index + 1, Source::group);
  } else {
    addSecondByte(LastByte{static_cast<std::int16_t>(index + 1), pair.second, true, sighting}, evidence);
  }
}

void MulticastChannel::addSecondByte(const LastByte& byte, PacketEvidence& evidence) {
  if (byte.index < lastByte_.index) {
    addByte(byte.index, byte.value, byte.sighting, evidence);
  } else {
    if (byte.index > lastByte_.index && lastByte_.waits)
      addByte(lastByte_.index, lastByte_.value, lastByte_.sighting, evidence);
    lastByte_ = byte;
  }
  const auto fields = evidence.fields(format_->encoding);
  if (!lastByte_.waits || !fields || lastByte_.index >= fields->packetLength(format_->encoding)) return;
  addByte(lastByte_.index, lastByte_.value, lastByte_.sighting, evidence);
  lastByte_.waits = false;
}

void MulticastChannel::beginWithBase(int base, PacketEvidence& evidence) {
  base_ = base;
  lastByte_ = LastByte();
  if (pending_.mayBe(base)) {
    pending_.forEach([&](const GroupPair& pair, Moment seen) { addPair(pair, Sighting{seen}, evidence); });
  }
  pending_.clear();
}

}  // namespace zor::receiver
