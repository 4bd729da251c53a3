#include "receiver/decoder/TwoOverheads.h"

#include <algorithm>
#include <cstdlib>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// An access point that holds frames relays them within this time.
constexpr std::int64_t kHeldWithin = wire::kLongestHold + 100'000;

/// Headers for quality of service and for encryption take less.
constexpr int kMaxStep = 64;

// A copy gives votes to its step, every other frame takes one.
constexpr int kVotesOfCopy = 16;
constexpr int kVotesOfBroadcastCopy = 8;  // Two frames of a burst look like copies more often.
constexpr int kVotesToBelieve = 30;

/// Where both copies are rarely heard, many frames come between two pairs.
constexpr int kMaxVotesOfCopies = 96;

/// A frame that an access point holds is now and then released at once. In turn a copy that was not held may
/// look like one that was, when the frame between them was lost and its group comes again.
constexpr int kLateCopiesOfNoHold = 8;
constexpr int kMaxLateCopies = 24;

constexpr GroupOctets kBroadcastOctets = {0xff, 0xff, 0xff};

bool isStep(int step) {
  return step != 0 && step <= kMaxStep;
}

bool isSync(const GroupOctets& group) {
  return group == wire::kVersion5SyncGroup || group == wire::kVersion3MarkerGroup;
}

}  // namespace

bool TwoOverheads::takeChange() {
  const bool changed = changed_;
  changed_ = false;
  return changed;
}

std::optional<TwoOverheads::Sorted> TwoOverheads::observe(const Observation& frame) {
  const MacAddress& to = frame.destination;
  Heard heard{frame.timeMicroseconds, static_cast<std::int16_t>(frame.frameLength), {to[3], to[4], to[5]}};
  if (isRepetition(heard)) return active_ ? std::nullopt : std::optional(Sorted{frame});
  learn(heard);
  Heard* copy = active_ ? findCopy(heard) : nullptr;
  const bool isLate = copy != nullptr && heard.time - copy->time >= wire::kRelayedWithin;
  if (copy != nullptr && heard.group != kBroadcastOctets) noteDelay(isLate);
  if (isLate && !holds()) copy = nullptr;
  Sorted sorted{frame, active_ && copy == nullptr};
  if (copy != nullptr) {
    sorted.frame.timeMicroseconds = copy->time;
    sorted.frame.frameLength = std::min(copy->length, heard.length);
    copy->paired = heard.paired = true;
    votes_ = kMaxVotesOfCopies;
  }
  keep(heard);
  return sorted;
}

/// The latest frame of the same channel.
const TwoOverheads::Heard& TwoOverheads::latest(const GroupOctets& group) const {
  if (group == kBroadcastOctets) return broadcast_;
  return groupFrames_[(next_ + kMaxGroupFrames - 1) % kMaxGroupFrames];
}

/// The same frame again, as a transmitter sends it that missed the acknowledgement.
bool TwoOverheads::isRepetition(const Heard& frame) const {
  const Heard& last = latest(frame.group);
  return last.length == frame.length && last.group == frame.group &&
         frame.time - last.time < wire::kRelayedWithin;
}

void TwoOverheads::learn(const Heard& frame) {
  const Heard& last = latest(frame.group);
  std::int16_t& candidate = frame.group == kBroadcastOctets ? broadcastStep_ : groupStep_;
  const bool close = last.length >= 0 && frame.time - last.time < wire::kRelayedWithin;
  const int pair = close ? 0 : candidate;
  const int step = std::abs(frame.length - last.length);
  candidate =
      static_cast<std::int16_t>(close && last.apart && last.group == frame.group && isStep(step) ? step : 0);
  if (pair != 0) believe(pair, frame.group == kBroadcastOctets ? kVotesOfBroadcastCopy : kVotesOfCopy);
  if (const int held = isSync(frame.group) ? stepOfHeldSync(frame) : 0; held != 0) {
    believe(held, kVotesToBelieve);
  } else if (pair == 0) {
    doubt();
  }
}

/// The step to a sync frame of another length that came lately, 0 if there is none. All sync frames of a run
/// have one length.
int TwoOverheads::stepOfHeldSync(const Heard& frame) const {
  for (const Heard& earlier : groupFrames_) {
    const int step = std::abs(frame.length - earlier.length);
    const bool recent = earlier.length >= 0 && frame.time - earlier.time < kHeldWithin;
    if (recent && earlier.group == frame.group && !earlier.paired && isStep(step)) return step;
  }
  return 0;
}

void TwoOverheads::believe(int step, int votes) {
  if (step != step_ && votes_ > 0) {
    votes_ = static_cast<std::uint8_t>(std::max(votes_ - kVotesOfCopy, 1));
    return doubt();
  }
  step_ = static_cast<std::int16_t>(step);
  votes_ = static_cast<std::uint8_t>(votes_ + votes);
  if (!active_ && votes_ < kVotesToBelieve) return;
  votes_ = kMaxVotesOfCopies;
  changed_ = changed_ || !active_;
  active_ = true;
}

void TwoOverheads::doubt() {
  if (votes_ == 0 || --votes_ > 0 || !active_) return;
  active_ = false;
  changed_ = true;
}

void TwoOverheads::noteDelay(bool isLate) {
  const int late = isLate ? late_ + 1 : late_ - kLateCopiesOfNoHold;
  late_ = static_cast<std::int8_t>(std::clamp(late, 0, kMaxLateCopies));
}

bool TwoOverheads::isCopy(const Heard& earlier, const Heard& frame) const {
  return earlier.length >= 0 && !earlier.paired && earlier.group == frame.group &&
         std::abs(frame.length - earlier.length) == step_;
}

TwoOverheads::Heard* TwoOverheads::findCopy(const Heard& frame) {
  if (frame.group == kBroadcastOctets) {
    const bool close = broadcast_.apart && frame.time - broadcast_.time < wire::kRelayedWithin;
    return close && isCopy(broadcast_, frame) ? &broadcast_ : nullptr;
  }
  Heard* latest = nullptr;
  for (Heard& earlier : groupFrames_) {
    if (!isCopy(earlier, frame) || frame.time - earlier.time >= kHeldWithin) continue;
    if (latest == nullptr || earlier.time > latest->time) latest = &earlier;
  }
  return latest;
}

void TwoOverheads::keep(const Heard& frame) {
  const bool isBroadcast = frame.group == kBroadcastOctets;
  const Heard& last = latest(frame.group);
  const bool apart = last.length < 0 || frame.time - last.time >= wire::kRelayedWithin;
  Heard& place = isBroadcast ? broadcast_ : groupFrames_[next_];
  place = frame;
  place.apart = apart;
  if (!isBroadcast) next_ = static_cast<std::uint8_t>((next_ + 1) % kMaxGroupFrames);
}

}  // namespace zor::receiver
