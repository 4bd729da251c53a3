#include "receiver/decoder/Decoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <utility>

#include "receiver/decoder/SenderRecord.h"
#include "receiver/decoder/SenderTable.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// Longer frames are not part of an encoding, whatever the overhead.
constexpr std::int32_t kMaxFrameLength = 4095;

/// Keeps differences of times within range.
constexpr std::int64_t kMaxTime = INT64_MAX / 4;

bool mayBelong(const Observation& observation) {
  const bool sane = observation.frameLength >= 0 && observation.frameLength <= kMaxFrameLength &&
                    observation.timeMicroseconds >= -kMaxTime && observation.timeMicroseconds <= kMaxTime;
  const MacAddress& to = observation.destination;
  if (!sane || to == wire::kBroadcastAddress) return sane;
  const GroupOctets group{to[3], to[4], to[5]};
  return std::equal(wire::kGroupPrefix.begin(), wire::kGroupPrefix.end(), to.begin()) &&
         (MulticastChannel::carries(kVersion5Multicast, group) ||
          MulticastChannel::carries(kVersion3Multicast, group));
}

}  // namespace

struct Decoder::State {
  SenderTable table;
  std::array<SenderRecord, kMaxSenders> records;
};

static_assert(SenderTable::kRecords == Decoder::kMaxSenders);

Decoder::Decoder() : state_(std::make_unique<State>()) {
  static_assert(sizeof(State) <= kMaxBytes);
}

Decoder::~Decoder() = default;

std::optional<Credentials> Decoder::observe(const Observation& observation) {
  if (!mayBelong(observation)) return std::nullopt;
  auto& records = state_->records;
  const auto isPromising = [&](std::size_t record) { return records[record].isPromising(); };
  const auto place = state_->table.observe(observation.sender, isPromising);
  if (!place) return std::nullopt;
  SenderRecord& record = records[place->record];
  if (place->isNew) {  // In place, because it takes 4 KiB.
    std::destroy_at(&record);
    std::construct_at(&record);
  }
  std::optional<Rejection> rejected;
  auto credentials = record.observe(observation, rejectionListener_ ? &rejected : nullptr);
  if (credentials) credentials->sender = observation.sender;
  if (rejected) {
    rejected->credentials.sender = observation.sender;
    rejectionListener_(*rejected);
  }
  return credentials;
}

DecoderProgress Decoder::progress() const {
  DecoderProgress progress;
  for (std::size_t i = 0; i < kMaxSenders; ++i) {
    if (!state_->table.used(i) || !state_->records[i].hasProgress()) continue;
    progress.push_back(state_->records[i].progress());
    progress.back().sender = state_->table.sender(i);
  }
  return progress;
}

void Decoder::setRejectionListener(std::function<void(const Rejection&)> listener) {
  rejectionListener_ = std::move(listener);
}

void Decoder::reset() {
  state_->table = SenderTable();  // A record begins anew when a sender gets it.
}

}  // namespace zor::receiver
