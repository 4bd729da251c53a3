#include "receiver/decoder/Decoder.h"

#include <algorithm>
#include <cstdint>

#include "receiver/decoder/SenderRecord.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

/// Longer frames are not part of an encoding, whatever the overhead.
constexpr std::int32_t kMaxFrameLength = 4095;

/// Keeps differences of times within range.
constexpr std::int64_t kMaxTime = INT64_MAX / 4;

bool mayBelong(const Observation& observation) {
  const MacAddress& to = observation.destination;
  const bool group = std::equal(wire::kGroupPrefix.begin(), wire::kGroupPrefix.end(), to.begin());
  return (group || to == wire::kBroadcastAddress) && observation.frameLength >= 0 &&
         observation.frameLength <= kMaxFrameLength && observation.timeMicroseconds >= -kMaxTime &&
         observation.timeMicroseconds <= kMaxTime;
}

/// The record to recycle is a free one, else one hardly heard, else the one silent longest.
bool isBetterVictim(const SenderRecord& candidate, const SenderRecord& victim) {
  if (candidate.used() != victim.used()) return !candidate.used();
  if (candidate.onProbation() != victim.onProbation()) return candidate.onProbation();
  return candidate.lastHeard() < victim.lastHeard();
}

}  // namespace

Decoder::Decoder() : records_(std::make_unique<SenderRecord[]>(kMaxSenders)) {}
Decoder::~Decoder() = default;
Decoder::Decoder(Decoder&&) noexcept = default;
Decoder& Decoder::operator=(Decoder&&) noexcept = default;

std::optional<Credentials> Decoder::observe(const Observation& observation) {
  if (!mayBelong(observation)) return std::nullopt;
  return recordOf(observation).observe(observation);
}

SenderRecord& Decoder::recordOf(const Observation& observation) {
  SenderRecord* victim = records_.get();
  for (std::size_t i = 0; i < kMaxSenders; ++i) {
    SenderRecord& record = records_[i];
    if (record.used() && record.sender() == observation.sender) return record;
    if (isBetterVictim(record, *victim)) victim = &record;
  }
  victim->assign(observation.sender);
  return *victim;
}

DecoderProgress Decoder::progress() const {
  DecoderProgress progress;
  for (std::size_t i = 0; i < kMaxSenders; ++i) {
    if (records_[i].used() && records_[i].hasProgress()) progress.push_back(records_[i].progress());
  }
  return progress;
}

void Decoder::reset() {
  records_ = std::make_unique<SenderRecord[]>(kMaxSenders);
}

}  // namespace zor::receiver
