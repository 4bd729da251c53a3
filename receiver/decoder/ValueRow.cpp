#include "receiver/decoder/ValueRow.h"

#include <algorithm>

#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

constexpr std::int64_t kMaxDelay = wire::kPauses[0] + wire::kLongestHold;

}  // namespace

void ValueRow::begin(std::optional<int> after, std::int64_t time) {
  after_.reset();
  if (after) after_ = static_cast<std::int16_t>(*after);
  time_ = momentOf(time);
  placed_ = 0;
  count_ = 0;
}

void ValueRow::push(std::uint8_t value) {
  if (count_ > 0 && values_[count_ - 1U] == value) return;
  if (count_ == kMaxValues) {
    after_.reset();
    return;
  }
  values_[count_++] = value;
}

bool ValueRow::end(int index, std::int64_t time, int packetLength, std::int64_t pace) {
  if (!after_ || count_ == 0) return false;
  const bool sameCycle = index > *after_;
  if (!sameCycle && packetLength == 0) return false;
  modulus_ = static_cast<std::int16_t>(sameCycle ? wire::kMaxPacketBytes : packetLength);
  last_ = static_cast<std::int16_t>(sameCycle ? index : index + packetLength);
  const Moment start = time_;
  time_ = momentOf(time);
  return time_ - start <= momentOf((last_ - *after_ + 1) * pace + kMaxDelay);
}

bool ValueRow::place(PacketEvidence& evidence) {
  // When a value was heard for each byte, bytes already known are tested rather than believed.
  const bool complete = count_ == last_ - *after_;
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
    const auto bit = static_cast<std::uint8_t>(1U << i);
    if (index != first[i]) {
      settled = false;
    } else if ((placed_ & bit) == 0) {
      placed_ |= bit;
      evidence.addByOrder(index % modulus_, values_[i], time_);
    }
  }
  return settled;
}

void OpenRows::add(const ValueRow& row) {
  if (count_ == kMaxRows) {
    std::move(rows_.begin() + 1, rows_.end(), rows_.begin());
    --count_;
  }
  rows_[count_++] = row;
}

void OpenRows::place(PacketEvidence& evidence) {
  while (changesPlaced_ != evidence.changes()) {
    changesPlaced_ = evidence.changes();
    const auto begin = rows_.begin();
    const auto end = std::remove_if(begin, begin + static_cast<std::ptrdiff_t>(count_),
                                    [&](ValueRow& row) { return row.place(evidence); });
    count_ = static_cast<std::size_t>(end - begin);
  }
}

}  // namespace zor::receiver
