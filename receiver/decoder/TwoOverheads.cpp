#include "receiver/decoder/TwoOverheads.h"

#include <algorithm>
#include <cstdlib>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// An access point that holds nothing relays a frame within this time, microseconds. Frames of a sender with
/// the same destination lie further apart.
constexpr std::int64_t kRelayedWithin = 7'000;

/// Headers for quality of service and for encryption take less.
constexpr int kMaxStep = 64;

constexpr int kVotesOfCopy = 4;
constexpr int kMaxVotes = 40;

}  // namespace

TwoOverheads::Channel& TwoOverheads::channelOf(const Observation& frame) {
  return frame.destination == wire::kBroadcastAddress ? broadcast_ : multicast_;
}

bool TwoOverheads::takeChange() {
  const bool changed = changed_;
  changed_ = false;
  return changed;
}

std::optional<TwoOverheads::Sorted> TwoOverheads::observe(const Observation& frame) {
  Channel& channel = channelOf(frame);
  const int step = frame.frameLength - channel.last.frameLength;
  const bool close = channel.heard && frame.timeMicroseconds - channel.last.timeMicroseconds < kRelayedWithin;
  const bool isCopy = close && channel.apart && channel.last.destination == frame.destination && step != 0 &&
                      std::abs(step) <= kMaxStep;
  const bool wasActive = active();
  if (isCopy && votes_ == 0) step_ = step;
  const bool agrees = isCopy && step == step_;
  votes_ = std::clamp(votes_ + (agrees ? kVotesOfCopy : isCopy ? -kVotesOfCopy : -1), 0, kMaxVotes);
  if (wasActive != active()) {
    changed_ = true;
    multicast_.kept = broadcast_.kept = false;
  }
  const Channel before = channel;
  channel = Channel{frame, true, active() && !(agrees && before.kept), !close};
  if (!active()) return Sorted{frame, false};
  if (!before.kept) return std::nullopt;
  return Sorted{before.last, !agrees};
}

}  // namespace zor::receiver
