#include "receiver/decoder/BroadcastChannel.h"

#include <algorithm>
#include <cstdint>

#include "receiver/decoder/Breaks.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// Equal lengths this close together are one frame heard twice.
constexpr std::int64_t kCopyWithin = 3'000;

/// No sender is this fast. Of two frames so close together one may be a stray; more come from a buffer, and
/// their times mean nothing.
constexpr std::int64_t kBurstWithin = 4'000;

/// A value is placed by time when it was heard within this part of a pace of where the grid puts it.
constexpr std::int64_t kValueTolerance = 4;

/// A base that known bytes agree with counts as much as one that a pair of sync frames has shown.
constexpr int kMatchVotes = 2;

}  // namespace

BroadcastChannel::BroadcastChannel() : clock_(wire::kVersion5BroadcastPace, true) {
  forgetCycle();
}

void BroadcastChannel::restart() {
  base_.restart();
  matcher_.reset();
  history_.clear();
  forgetCycle();
}

void BroadcastChannel::forgetCycle() {
  clock_.restart();
  lastDecoded_ = INT64_MIN / 2;
  shortGaps_ = 0;
  lastPosition_ = -1;
  waitingCount_ = 0;
  row_.begin(std::nullopt, 0);
  openRows_.clear();
  singleValues_.clear();
}

void BroadcastChannel::observe(int length, std::int64_t time, PacketEvidence& evidence) {
  if (!history_.empty() && length == history_.lastLength() && time - history_.lastTime() < kCopyWithin)
    return;
  const bool shown = baseShown(length, time);
  history_.add(length, time);
  if (shown) {
    beginWithBase(evidence);
  } else if (base_.base()) {
    decode(length, time, evidence);
  }
}

std::optional<int> BroadcastChannel::shorterLength(int length, int step, std::int64_t time,
                                                   const PacketEvidence& evidence) {
  if (!base_.base() || !clock_.steady()) return std::nullopt;
  const int offset = length - *base_.base();
  const bool mayBeShorter = isPossible(offset, time, evidence);
  const bool mayBeLonger = isPossible(offset - step, time, evidence);
  if (mayBeShorter != mayBeLonger) return mayBeShorter ? length : length - step;
  if (!mayBeShorter || offset - step < wire::kValueOffset) return std::nullopt;
  const auto index = clock_.indexInAnyCycle(time + clock_.pace() / 2, clock_.pace() / kValueTolerance);
  const auto value = singleValues_.observe(*index, offset - wire::kValueOffset, step);
  if (!value) return std::nullopt;
  return *value + wire::kValueOffset + *base_.base();
}

/// True when a frame of this length above the base may have been sent at this time.
bool BroadcastChannel::isPossible(int offset, std::int64_t time, const PacketEvidence& evidence) const {
  const int packetLength = evidence.packetLength();
  const int end = packetLength == 0 ? wire::kMaxPacketBytes : packetLength;
  if (offset < wire::kPositionOffset || offset >= wire::kSync2Offset) return false;
  if (offset < wire::kValueOffset)
    return offset - wire::kPositionOffset < end && clock_.fits(offset - wire::kPositionOffset, time);
  const auto index = clock_.indexInAnyCycle(time + clock_.pace() / 2, clock_.pace() / kValueTolerance);
  if (!index || *index < 0 || *index >= end) return false;
  const auto known = evidence.byteAt(Encoding::version5, *index);
  return !known || *known == offset - wire::kValueOffset;
}

bool BroadcastChannel::baseShown(int length, std::int64_t time) {
  const bool inSuccession = !history_.empty() && time - history_.lastTime() <= clock_.pace() * 3 / 4;
  if (!base_.base() && inSuccession) matcher_.add(history_.lastLength(), length);
  return base_.observe(length, time);
}

void BroadcastChannel::findBase(PacketEvidence& evidence, std::optional<int> likelyBase) {
  if (base_.base() || matcher_.empty() || evidence.knownCount() == 0) return;
  const auto base = matcher_.match(evidence, likelyBase);
  if (base && base_.vote(*base, kMatchVotes)) beginWithBase(evidence);
}

std::optional<int> BroadcastChannel::commonBase(const PendingPairs& multicast) const {
  if (base_.base()) return std::nullopt;
  return matcher_.commonBase(multicast);
}

void BroadcastChannel::beginWithBase(PacketEvidence& evidence) {
  evidence.dropLengthPieces();
  forgetCycle();
  history_.replay([&](int length, std::int64_t time) { decode(length, time, evidence); });
}

void BroadcastChannel::decode(int length, std::int64_t time, PacketEvidence& evidence) {
  const int offset = length - *base_.base();
  if (offset < wire::kSync1Offset || offset > wire::kSync2Offset) {
    evidence.noteForeign();
    return;
  }
  noticeBurst(time, evidence);
  if (offset == wire::kSync1Offset || offset == wire::kSync2Offset || offset == wire::kSync3Offset) {
    observeSync(time, evidence);
  } else if (offset >= wire::kValueOffset) {
    observeValue(static_cast<std::uint8_t>(offset - wire::kValueOffset), time);
  } else {
    observePosition(offset - wire::kPositionOffset, time, evidence);
  }
}

void BroadcastChannel::noticeBurst(std::int64_t time, PacketEvidence& evidence) {
  shortGaps_ = time - lastDecoded_ < kBurstWithin ? shortGaps_ + 1 : 0;
  if (shortGaps_ == 1) clock_.noteCloseFrames();
  if (shortGaps_ > 1) {
    const bool timeless = clock_.timeless();
    clock_.noteBurst();
    if (clock_.timeless() && !timeless) evidence.dropLengthPieces();
    waitingCount_ = 0;
  }
  lastDecoded_ = time;
}

void BroadcastChannel::observeSync(std::int64_t time, PacketEvidence& evidence) {
  lastPosition_ = -1;
  const int length = evidence.packetLength();
  if (!clock_.steady() && length != 0) endRow(length - 1, time, evidence);
  row_.begin(-1, time);
}

void BroadcastChannel::observeValue(std::uint8_t value, std::int64_t time) {
  lastPosition_ = -1;
  row_.push(value);
  if (waitingCount_ == kMaxWaiting) {
    std::move(waiting_.begin() + kMaxWaiting / 2, waiting_.end(), waiting_.begin());
    waitingCount_ = kMaxWaiting / 2;
  }
  waiting_[waitingCount_++] = Value{time, value};
}

void BroadcastChannel::observePosition(int index, std::int64_t time, PacketEvidence& evidence) {
  if (index == lastPosition_) return;  // Repeated: the first one keeps the time.
  lastPosition_ = index;
  const CycleClock before = clock_;
  const CycleClock::Fit fit = clock_.observe(index, time);
  noteFit(clock_, fit, Source::length, evidence);
  if (fit == CycleClock::Fit::timeless) evidence.dropLengthPieces();
  if (!clock_.steady()) {
    endRow(index, time, evidence);
    if (row_.isFollowedBy(index)) evidence.noteLastByte(index, Source::length);
  } else if (fit != CycleClock::Fit::outlier) {
    placeByTime(before, fit, index, evidence);
  }
  row_.begin(index, time);
}

void BroadcastChannel::placeByTime(const CycleClock& before, CycleClock::Fit fit, int index,
                                   PacketEvidence& evidence) {
  evidence.noteLastByte(index, Source::length);
  for (std::size_t i = 0; i < waitingCount_; ++i) {
    const Value& value = waiting_[i];
    auto place = clock_.indexAt(value.time + clock_.pace() / 2, clock_.pace() / kValueTolerance);
    const bool nextCycle = fit == CycleClock::Fit::nextCycle || fit == CycleClock::Fit::newCycle;
    if (place && *place < 0 && nextCycle) {
      place = before.indexAt(value.time + before.pace() / 2,
                             before.pace() / kValueTolerance);  // End of the last cycle.
    }
    if (place) {
      evidence.add(*place, value.value, {momentOf(value.time), Source::length});
    } else if (before.steady()) {
      evidence.noteStray();
    }
  }
  waitingCount_ = 0;
}

void BroadcastChannel::endRow(int lastIndex, std::int64_t time, PacketEvidence& evidence) {
  if (!row_.end(lastIndex, time, evidence.packetLength(), clock_.pace())) return;
  if (!row_.place(evidence)) openRows_.add(row_);
}

}  // namespace zor::receiver
