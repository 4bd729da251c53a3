#include "receiver/ValueRun.h"

#include <algorithm>

#include "receiver/WireConstants.h"

namespace zor::receiver {
namespace {

// Pauses between cycles, and what a buffer may hold a frame, together.
constexpr std::int64_t kLongestDelay = 400'000;

}  // namespace

void ValueRun::begin(std::optional<int> after, std::int64_t time) {
  after_ = after;
  begun_ = time;
  told_.fill(false);
  count_ = 0;
}

void ValueRun::push(std::uint8_t value) {
  if (count_ > 0 && values_[count_ - 1] == value) return;
  if (count_ == kMostValues) {
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
  return time - begun_ <= (last_ - *after_ + 1) * pace + kLongestDelay;
}

bool ValueRun::place(PacketEvidence& evidence) {
  // With a value heard for each byte, bytes known already are put to the test too.
  const bool complete = static_cast<int>(count_) == last_ - *after_;
  const auto fits = [&](int index, std::size_t i) {
    return complete || !evidence.excludes(index % modulus_, values_[i]);
  };
  // The first index that each value can have when those before it are put as early as they fit, and the last.
  std::array<int, kMostValues> first{};
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
    } else if (!told_[i]) {
      told_[i] = true;
      evidence.add(index % modulus_, values_[i], PacketEvidence::Source::kLength, time_);
    }
  }
  return settled;
}

void OpenRuns::add(const ValueRun& run) {
  if (count_ == kMostRuns) {
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
