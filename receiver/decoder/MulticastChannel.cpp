#include "receiver/decoder/MulticastChannel.h"

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
    : format_(&format), clock_(format.defaultPace) {}

void MulticastChannel::restart() {
  clock_.restart();
  pending_.clear();
  lastByte_ = LastByte();
}

bool MulticastChannel::carries(const MulticastFormat& format, const GroupOctets& group) {
  return group == format.syncGroup || group[0] == format.evenMark || group[0] == format.oddMark;
}

void MulticastChannel::observe(const GroupOctets& group, int length, std::int64_t time,
                               PacketEvidence& evidence) {
  heard_ = true;
  if (group == format_->syncGroup) {
    observeSync(length, evidence);
  } else {
    observeData(GroupPair{length, group[0] == format_->oddMark, group[1], group[2]}, time, evidence);
  }
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

void MulticastChannel::observeData(const GroupPair& pair, std::int64_t time, PacketEvidence& evidence) {
  // Without a base the lengths serve as indices, as the clock looks at differences only.
  noteFit(clock_, clock_.observe(pair.length, time), Source::group, evidence);
  if (!base_) {
    pending_.keep(pair, momentOf(time));
    if (const auto base = pending_.baseOfWholePacket(format_->encoding)) beginWithBase(*base, evidence);
    return;
  }
  const int index = pair.length - *base_;
  if (index < 0 || index >= wire::kMaxPairs || (index % 2 != 0) != pair.odd) {
    evidence.restart();
    base_.reset();
    return;
  }
  addPair(pair, momentOf(time), evidence);
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

void MulticastChannel::addByte(int index, std::uint8_t value, Moment seen, PacketEvidence& evidence) const {
  evidence.add(pieceOf(format_->encoding, index), value, Source::group, seen);
}

void MulticastChannel::addPair(const GroupPair& pair, Moment seen, PacketEvidence& evidence) {
  const int index = 2 * (pair.length - *base_);
  addByte(index, pair.first, seen, evidence);
  if (format_->encoding == Encoding::version5) {
    addByte(index + 1, pair.second, seen, evidence);
    evidence.noteLastByte(index + 1, Source::group);
  } else {
    addSecondByte(LastByte{index + 1, pair.second, true, seen}, evidence);
  }
}

void MulticastChannel::addSecondByte(const LastByte& byte, PacketEvidence& evidence) {
  if (byte.index < lastByte_.index) {
    addByte(byte.index, byte.value, byte.seen, evidence);
  } else {
    if (byte.index > lastByte_.index && lastByte_.waits)
      addByte(lastByte_.index, lastByte_.value, lastByte_.seen, evidence);
    lastByte_ = byte;
  }
  const auto fields = evidence.fields(format_->encoding);
  if (!lastByte_.waits || !fields || lastByte_.index >= fields->packetLength(format_->encoding)) return;
  addByte(lastByte_.index, lastByte_.value, lastByte_.seen, evidence);
  lastByte_.waits = false;
}

void MulticastChannel::beginWithBase(int base, PacketEvidence& evidence) {
  base_ = base;
  lastByte_ = LastByte();
  if (pending_.mayBe(base)) {
    pending_.forEach([&](const GroupPair& pair, Moment seen) { addPair(pair, seen, evidence); });
  }
  pending_.clear();
}

}  // namespace zor::receiver
