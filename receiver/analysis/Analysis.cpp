#include "receiver/analysis/Analysis.h"

#include <algorithm>

namespace zor::receiver {
namespace {

std::uint64_t keyOf(const MacAddress& address) {
  std::uint64_t key = 0;
  for (const std::uint8_t byte : address) key = key << 8U | byte;
  return key;
}

MacAddress addressOf(std::uint64_t key) {
  MacAddress address;
  for (std::size_t i = address.size(); i-- > 0; key >>= 8U) address[i] = static_cast<std::uint8_t>(key);
  return address;
}

}  // namespace

Analysis::Analysis(std::size_t framesKept) : framesKept_(framesKept) {}
Analysis::~Analysis() = default;

const Completion* Analysis::observe(const CapturedFrame& frame) {
  if (++totals_.frames == 1) totals_.firstMicroseconds = totals_.lastMicroseconds = frame.timeMicroseconds;
  totals_.firstMicroseconds = std::min(totals_.firstMicroseconds, frame.timeMicroseconds);
  totals_.lastMicroseconds = std::max(totals_.lastMicroseconds, frame.timeMicroseconds);
  ++totals_.kinds[static_cast<std::size_t>(frame.kind)];
  return frame.kind == FrameKind::data ? observeData(frame) : nullptr;
}

const Completion* Analysis::observeData(const CapturedFrame& frame) {
  const Destination destination = classify(frame.destination);
  switch (destination) {
    case Destination::host: {
      ++totals_.unicasts;
      const std::size_t slot = slotOf(keyOf(frame.source));
      if (slot < used_ && frame.leg == Leg::fromAccessPoint) ++senders_[slot].unicasts;
      return nullptr;
    }
    case Destination::otherGroup:
      ++totals_.otherGroups;
      return nullptr;
    case Destination::broadcast:
      ++totals_.broadcasts;
      break;
    default:
      ++totals_.ourGroups;
  }
  Sender& sender = senderOf(frame);
  auto& leg = sender.legs[static_cast<std::size_t>(frame.leg)];
  if (leg == nullptr) leg = std::make_unique<LegMeter>(framesKept_);
  const bool isNew = leg->observe(frame, destination, totals_.frames);
  appraise(sender, destination);
  return isNew ? decode(frame, sender) : nullptr;
}

const Completion* Analysis::decode(const CapturedFrame& frame, Sender& sender) {
  auto& decoder = decoders_[static_cast<std::size_t>(frame.leg)];
  if (decoder == nullptr) decoder = std::make_unique<Decoder>();
  Observation observation;
  observation.timeMicroseconds = frame.timeMicroseconds;
  observation.sender = frame.source;
  observation.destination = frame.destination;
  observation.frameLength = frame.length;
  auto credentials = decoder->observe(observation);
  if (!credentials || sender.completions.size() == kMaxCompletions) return nullptr;
  sender.completions.push_back({std::move(*credentials), frame.leg, frame.timeMicroseconds, totals_.frames});
  return &sender.completions.back();
}

std::size_t Analysis::slotOf(std::uint64_t key) const {
  if (latest_ < used_ && keys_[latest_] == key) return latest_;
  return static_cast<std::size_t>(std::find(keys_.begin(), keys_.begin() + used_, key) - keys_.begin());
}

Analysis::Sender& Analysis::senderOf(const CapturedFrame& frame) {
  const std::uint64_t key = keyOf(frame.source);
  std::size_t slot = slotOf(key);
  if (slot == used_) {
    slot = makeRoom();
    keys_[slot] = key;
    senders_[slot] = Sender();
    senders_[slot].firstFrame = totals_.frames;
    senders_[slot].addressIsIpv4 = frame.addressesAreIpv4;
  }
  latest_ = slot;
  lastHeard_[slot] = frame.timeMicroseconds;
  return senders_[slot];
}

std::size_t Analysis::makeRoom() {
  if (used_ < kMaxSenders) return used_++;
  std::size_t slot = 0;
  for (std::size_t i = 1; i < kMaxSenders; ++i) {
    const Worth worth = senders_[i].worth;
    const Worth least = senders_[slot].worth;
    if (worth != least ? worth < least : lastHeard_[i] < lastHeard_[slot]) slot = i;
  }
  return slot;
}

void Analysis::appraise(Sender& sender, Destination destination) {
  if (sender.worth == Worth::run) return;
  const bool isRun =
      std::ranges::any_of(sender.legs, [](const auto& leg) { return leg != nullptr && leg->isRun(); });
  if (isRun) {
    sender.worth = Worth::run;
  } else if (destination != Destination::broadcast) {
    sender.worth = Worth::groups;
  }
}

SenderReport Analysis::report(const MacAddress& address, const Sender& sender) {
  SenderReport report;
  report.address = address;
  report.addressIsIpv4 = sender.addressIsIpv4;
  report.unicasts = sender.unicasts;
  report.completions = sender.completions;
  for (std::size_t i = 0; i < kLegs; ++i) {
    if (sender.legs[i] == nullptr) continue;
    LegReport& leg = report.legs.emplace_back(sender.legs[i]->report(static_cast<Leg>(i)));
    const auto first = std::ranges::find(report.completions, leg.leg, &Completion::leg);
    if (first == report.completions.end()) continue;
    leg.completion = *first;
    leg.crc = Crc::holds;
  }
  return report;
}

CaptureReport Analysis::report() const {
  CaptureReport report = totals_;
  std::vector<std::size_t> runs;
  for (std::size_t i = 0; i < used_; ++i) {
    if (senders_[i].worth == Worth::run) runs.push_back(i);
  }
  std::ranges::sort(runs, {}, [this](std::size_t i) { return senders_[i].firstFrame; });
  for (const std::size_t i : runs)
    report.senders.push_back(Analysis::report(addressOf(keys_[i]), senders_[i]));
  return report;
}

}  // namespace zor::receiver
