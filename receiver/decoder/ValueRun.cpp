#include "receiver/decoder/ValueRun.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// The pause between cycles, plus the time for which a buffer may hold a frame.
constexpr std::int64_t kMaxDelay = 400'000;

}  // namespace

void ValueRun::begin(std::optional<int> after, std::int64_t time) {
  after_ = after;
  startTime_ = time;
  placed_.fill(false);
  count_ = 0;
}

void ValueRun::push(std::uint8_t value) {
  if (count_ > 0 && values_[count_ - 1] == value) return;
  if (count_ == kMaxValues) {
    after_.reset();
    return;
  }
  values_[count_++] = value;
}

bool ValueRun::end(int index, std::int64_t time, int packetLength, std::int64_t pace) {
  if (!after_ || count_ == 0) return false;
  const bool sameCycle = index > *after_;
  if (!sameCycle && packetLength == 0) return false;
  last_ = sameCycle ? index : index + packetLength;
  modulus_ = sameCycle ? wire::kMaxPacketBytes : packetLength;
  time_ = time;
  return time - startTime_ <= (last_ - *after_ + 1) * pace + kMaxDelay;
}

bool ValueRun::place(PacketEvidence& evidence) {
  // When a value was heard for each byte, bytes already known are tested rather than believed.
  const bool complete = static_cast<int>(count_) == last_ - *after_;
  const auto fits = [&](int index, std::size_t i) {
    return complete || !evidence.excludes(index % modulus_, values_[i]);
  };
  // The first index that each value can have, with those before it placed as early as they fit; below, the
  // last.
  std::array<int, kMaxValues> first{};
  int index = *after_;
  for (std::size_t i = 0; i < count_; ++i) {
    do {
      if (++index > last_) return true;
    } while (!fits(index, i));
    first[i] = index;
  }
  bool settled = true;
  index = last_ + 1;
  for (std::size_t i = count_; i-- > 0;) {
    do {
      --index;
    } while (!fits(index, i));
    if (index != first[i]) {
      settled = false;
    } else if (!placed_[i]) {
      placed_[i] = true;
      evidence.add(index % modulus_, values_[i], PacketEvidence::Source::length, time_);
    }
  }
  return settled;
}

void OpenRuns::add(const ValueRun& run) {
  if (count_ == kMaxRuns) {
    std::move(runs_.begin() + 1, runs_.end(), runs_.begin());
    --count_;
  }
  runs_[count_++] = run;
}

void OpenRuns::place(PacketEvidence& evidence) {
  while (changesPlaced_ != evidence.changes()) {
    changesPlaced_ = evidence.changes();
    const auto begin = runs_.begin();
    const auto end = std::remove_if(begin, begin + static_cast<std::ptrdiff_t>(count_),
                                    [&](ValueRun& run) { return run.place(evidence); });
    count_ = static_cast<std::size_t>(end - begin);
  }
}

}  // namespace zor::receiver
