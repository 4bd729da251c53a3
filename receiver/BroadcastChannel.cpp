#include "receiver/BroadcastChannel.h"

#include <algorithm>
#include <cstdint>

#include "receiver/WireConstants.h"

namespace zor::receiver {
namespace {

// One byte takes a value and a position frame of 15 ms each.
constexpr std::int64_t kDefaultPace = 30'000;

// Equal lengths this close are one frame heard twice.
constexpr std::int64_t kCopyWithin = 3'000;

// Different frames this close were not sent so but released from a buffer, and their times mean nothing.
constexpr std::int64_t kBurstWithin = 4'000;

// Positions do not begin anew so soon: there are sync frames and values in between.
constexpr std::int64_t kNoCycleWithin = 2'000;

// A base that the bytes agree on is as good as one that a pair of sync frames has shown.
constexpr int kMatchVotes = 2;

}  // namespace

BroadcastChannel::BroadcastChannel() : clock_(kDefaultPace) {
  forgetCycle();
}

void BroadcastChannel::restart() {
  base_.restart();
  matcher_.reset();
  history_.fill(Frame());
  forgetCycle();
}

void BroadcastChannel::forgetCycle() {
  clock_.restart();
  lastDecoded_ = INT64_MIN / 2;
  waitingCount_ = 0;
  run_.begin(std::nullopt);
}

void BroadcastChannel::observe(int length, std::int64_t time, PacketEvidence& evidence,
                               const PacketEvidence& other, std::optional<int> likelyBase) {
  const Frame frame{length, time};
  const Frame previous = previous_;
  previous_ = frame;
  if (length == previous.length && time - previous.time < kCopyWithin) return;
  remember(length, time);
  if (findBase(frame, previous) || (!base_.base() && matchBase(evidence, other, likelyBase))) {
    evidence.dropLengthBytes();
    forgetCycle();
    replay(evidence);
  } else if (base_.base()) {
    decode(length, time, evidence);
  }
}

bool BroadcastChannel::findBase(const Frame& frame, const Frame& previous) {
  const bool inSuccession = previous.length >= 0 && frame.time - previous.time <= clock_.pace() * 3 / 4;
  if (!base_.base() && inSuccession) matcher_.addPair(previous.length, frame.length);
  return base_.observe(frame.length, frame.time);
}

bool BroadcastChannel::matchBase(const PacketEvidence& evidence, const PacketEvidence& other,
                                 std::optional<int> likelyBase) {
  if (evidence.knownCount() + other.knownCount() == 0) return false;
  const auto base = matcher_.match(bytesTold(Encoding::kVersion5, evidence, other), likelyBase);
  return base && base_.vote(*base, kMatchVotes);
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
  noticeBurst(time);
  if (offset == wire::kSync1Offset || offset == wire::kSync2Offset || offset == wire::kSync3Offset) {
    observeSync(offset, time, evidence);
  } else if (offset >= wire::kValueOffset) {
    observeValue(static_cast<std::uint8_t>(offset - wire::kValueOffset), time);
  } else {
    observePosition(offset - wire::kPositionOffset, time, evidence);
  }
}

void BroadcastChannel::noticeBurst(std::int64_t time) {
  if (time - lastDecoded_ < kBurstWithin) {
    clock_.distrust();
    waitingCount_ = 0;
  }
  lastDecoded_ = time;
}

void BroadcastChannel::observeSync(int offset, std::int64_t time, PacketEvidence& evidence) {
  const int length = evidence.packetLength();
  if (!clock_.steady() && length != 0) placeByOrder(length - 1, time, evidence);
  run_.begin(std::nullopt);
  if (offset == wire::kSync3Offset) run_.begin(-1);
}

void BroadcastChannel::observeValue(std::uint8_t value, std::int64_t time) {
  run_.push(value);
  if (waitingCount_ == kMostWaiting) {
    std::move(waiting_.begin() + kMostWaiting / 2, waiting_.end(), waiting_.begin());
    waitingCount_ = kMostWaiting / 2;
  }
  waiting_[waitingCount_++] = Value{value, time};
}

void BroadcastChannel::observePosition(int index, std::int64_t time, PacketEvidence& evidence) {
  if (index < lastPosition_.index && time - lastPosition_.time < kNoCycleWithin) evidence.noteDisorder();
  lastPosition_ = {index, time};
  const CycleClock before = clock_;
  const CycleClock::Fit fit = clock_.observe(index, time);
  if (fit == CycleClock::Fit::kStarted) evidence.noteChannelBegin(time);
  if (fit == CycleClock::Fit::kNewCycle) {
    evidence.noteBreak(clock_.cycleBegin(), RunContinuity::Break::kProvisional);
  } else if (fit == CycleClock::Fit::kBroken) {
    evidence.noteBreak(clock_.cycleBegin(), RunContinuity::Break::kUnexplained);
  }
  if (!clock_.steady()) {
    placeByOrder(index, time, evidence);
    if (run_.after && index == *run_.after + 1) evidence.notePosition(index);
  } else if (fit != CycleClock::Fit::kOutlier) {
    if (before.steady() && before.hasOutlier() && fit == CycleClock::Fit::kOnGrid) evidence.noteStrayFrame();
    placeByTime(before, fit, index, evidence);
  }
  run_.begin(index);
}

void BroadcastChannel::placeByTime(const CycleClock& before, CycleClock::Fit fit, int index,
                                   PacketEvidence& evidence) {
  evidence.notePosition(index);
  for (std::size_t i = 0; i < waitingCount_; ++i) {
    const Value& value = waiting_[i];
    auto place = clock_.indexAt(value.time + clock_.pace() / 2);
    const bool nextCycle = fit == CycleClock::Fit::kNextCycle || fit == CycleClock::Fit::kNewCycle;
    if (place && *place < 0 && nextCycle) {
      place = before.indexAt(value.time + before.pace() / 2);  // end of the cycle before
    } else if (place && *place > index) {
      place.reset();
    }
    if (place) {
      evidence.add(*place, value.value, PacketEvidence::Source::kLength, value.time);
    } else if (before.steady()) {
      evidence.noteStrayFrame();
    }
  }
  waitingCount_ = 0;
}

void BroadcastChannel::placeByOrder(int lastIndex, std::int64_t time, PacketEvidence& evidence) const {
  if (!run_.after) return;
  // With a value heard for each byte, bytes known already are put to the test too.
  const bool complete = static_cast<int>(run_.count) == lastIndex - *run_.after;
  const auto fits = [&](int index, std::size_t place) {
    return complete || !evidence.known(index) || evidence.byte(index) == run_.values[place];
  };
  // The first index that each value can have when those before it are put as early as they fit, and the last.
  std::array<int, ValueRun::kMost> first{};
  int index = *run_.after;
  for (std::size_t place = 0; place < run_.count; ++place) {
    do {
      if (++index > lastIndex) return;
    } while (!fits(index, place));
    first[place] = index;
  }
  index = lastIndex + 1;
  for (std::size_t place = run_.count; place-- > 0;) {
    do {
      --index;
    } while (!fits(index, place));
    if (index == first[place]) {
      evidence.add(index, run_.values[place], PacketEvidence::Source::kLength, time);
    }
  }
}

void BroadcastChannel::ValueRun::begin(std::optional<int> position) {
  after = position;
  count = 0;
}

void BroadcastChannel::ValueRun::push(std::uint8_t value) {
  if (count > 0 && values[count - 1] == value) return;
  if (count == kMost) {
    after.reset();
    return;
  }
  values[count++] = value;
}

}  // namespace zor::receiver
