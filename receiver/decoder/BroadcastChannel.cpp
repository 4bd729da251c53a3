#include "receiver/decoder/BroadcastChannel.h"

#include <algorithm>
#include <cstdint>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// One byte takes a value frame and a position frame of 15 ms each.
constexpr std::int64_t kDefaultPace = 30'000;

/// Equal lengths this close together are one frame heard twice.
constexpr std::int64_t kCopyWithin = 3'000;

/// Different frames this close together come from a buffer: no sender is that fast, and the times mean
/// nothing.
constexpr std::int64_t kBurstWithin = 4'000;

/// No new cycle starts this early: sync frames and values come between its positions and those of the last
/// one.
constexpr std::int64_t kNoCycleWithin = 2'000;

/// A base that known bytes agree with counts as much as one that a pair of sync frames has shown.
constexpr int kMatchVotes = 2;

}  // namespace

BroadcastChannel::BroadcastChannel() : clock_(kDefaultPace) {
  forgetCycle();
}

void BroadcastChannel::restart() {
  base_.restart();
  matcher_.reset();
  history_.fill(Frame());
  previous_ = Frame();
  forgetCycle();
}

void BroadcastChannel::forgetCycle() {
  clock_.restart();
  lastDecoded_ = INT64_MIN / 2;
  lastPosition_ = {};
  positionLast_ = false;
  waitingCount_ = 0;
  run_.begin(std::nullopt, 0);
  openRuns_.clear();
}

void BroadcastChannel::observe(int length, std::int64_t time, PacketEvidence& evidence) {
  const Frame frame{length, time};
  const Frame previous = previous_;
  previous_ = frame;
  if (length == previous.length && time - previous.time < kCopyWithin) return;
  remember(length, time);
  if (baseShown(frame, previous)) {
    beginWithBase(evidence);
  } else if (base_.base()) {
    decode(length, time, evidence);
  }
}

bool BroadcastChannel::baseShown(const Frame& frame, const Frame& previous) {
  const bool inSuccession = previous.length >= 0 && frame.time - previous.time <= clock_.pace() * 3 / 4;
  if (!base_.base() && inSuccession) matcher_.addPair(previous.length, frame.length);
  return base_.observe(frame.length, frame.time);
}

void BroadcastChannel::findBase(PacketEvidence& evidence, const PacketEvidence& other,
                                std::optional<int> likelyBase, int packetLength) {
  if (base_.base() || matcher_.empty() || evidence.knownCount() + other.knownCount() == 0) return;
  const auto base = matcher_.match(knownBytes(Encoding::version5, evidence, other), likelyBase, packetLength);
  if (base && base_.vote(*base, kMatchVotes)) beginWithBase(evidence);
}

std::optional<int> BroadcastChannel::commonBase(const PendingPairs& multicast) const {
  if (base_.base() || matcher_.empty() || multicast.empty()) return std::nullopt;
  std::optional<int> found;
  for (int base = multicast.lowestBase(); base <= multicast.shortest(); ++base) {
    const auto known = multicast.bytesIf(base);
    if (!known || !matcher_.confirms(base, *known)) continue;
    if (found) return std::nullopt;
    found = base;
  }
  return found;
}

void BroadcastChannel::beginWithBase(PacketEvidence& evidence) {
  evidence.dropLengthBytes();
  forgetCycle();
  replay(evidence);
}

void BroadcastChannel::remember(int length, std::int64_t time) {
  history_[historyNext_] = Frame{length, time};
  historyNext_ = (historyNext_ + 1) % kHistory;
}

void BroadcastChannel::replay(PacketEvidence& evidence) {
  for (std::size_t i = 0; i < kHistory; ++i) {
    const Frame& frame = history_[(historyNext_ + i) % kHistory];
    if (frame.length >= 0) decode(frame.length, frame.time, evidence);
  }
}

void BroadcastChannel::decode(int length, std::int64_t time, PacketEvidence& evidence) {
  const int offset = length - *base_.base();
  if (offset < wire::kSync1Offset) return;
  if (offset > wire::kSync2Offset) {
    evidence.noteStrayFrame();
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
  if (time - lastDecoded_ < kBurstWithin) {
    const bool timeless = clock_.timeless();
    clock_.noteBurst();
    if (clock_.timeless() && !timeless) {
      evidence.excuseBreaks(clock_);
      evidence.doubtLengthBytes();
    }
    waitingCount_ = 0;
  }
  lastDecoded_ = time;
}

void BroadcastChannel::observeSync(std::int64_t time, PacketEvidence& evidence) {
  positionLast_ = false;
  const int length = evidence.packetLength();
  if (!clock_.steady() && length != 0) endRun(length - 1, time, evidence);
  run_.begin(-1, time);
}

void BroadcastChannel::observeValue(std::uint8_t value, std::int64_t time) {
  positionLast_ = false;
  run_.push(value);
  if (waitingCount_ == kMaxWaiting) {
    std::move(waiting_.begin() + kMaxWaiting / 2, waiting_.end(), waiting_.begin());
    waitingCount_ = kMaxWaiting / 2;
  }
  waiting_[waitingCount_++] = Value{value, time};
}

void BroadcastChannel::observePosition(int index, std::int64_t time, PacketEvidence& evidence) {
  if (index == lastPosition_.index && positionLast_) return;  // Repeated: the first one keeps the time.
  positionLast_ = true;
  if (index < lastPosition_.index && time - lastPosition_.time < kNoCycleWithin) evidence.noteDisorder();
  lastPosition_ = {index, time};
  const CycleClock before = clock_;
  const CycleClock::Fit fit = clock_.observe(index, time);
  evidence.noteTimetable(clock_, fit);
  if (fit == CycleClock::Fit::timeless) evidence.doubtLengthBytes();
  if (!clock_.steady()) {
    endRun(index, time, evidence);
    if (run_.isFollowedBy(index)) evidence.notePosition(index);
  } else if (fit != CycleClock::Fit::outlier) {
    if (before.steady() && before.hasOutlier() && fit == CycleClock::Fit::onGrid) evidence.noteStrayFrame();
    placeByTime(before, fit, index, evidence);
  }
  run_.begin(index, time);
}

void BroadcastChannel::placeByTime(const CycleClock& before, CycleClock::Fit fit, int index,
                                   PacketEvidence& evidence) {
  evidence.notePosition(index);
  for (std::size_t i = 0; i < waitingCount_; ++i) {
    const Value& value = waiting_[i];
    auto place = clock_.indexAt(value.time + clock_.pace() / 2);
    const bool nextCycle = fit == CycleClock::Fit::nextCycle || fit == CycleClock::Fit::newCycle;
    if (place && *place < 0 && nextCycle) {
      place = before.indexAt(value.time + before.pace() / 2);  // End of the last cycle.
    } else if (place && *place > index) {
      place.reset();
    }
    if (place) {
      evidence.add(*place, value.value, PacketEvidence::Source::length, value.time);
    } else if (before.steady()) {
      evidence.noteStrayFrame();
    }
  }
  waitingCount_ = 0;
}

void BroadcastChannel::endRun(int lastIndex, std::int64_t time, PacketEvidence& evidence) {
  if (!run_.end(lastIndex, time, evidence.packetLength(), clock_.pace())) return;
  if (!run_.place(evidence)) openRuns_.add(run_);
}

}  // namespace zor::receiver
