#include "receiver/SenderRecord.h"

#include <algorithm>

#include "receiver/PacketView.h"

namespace zor::receiver {
namespace {

// Senders pause this long between cycles unless told otherwise.
constexpr std::int64_t kDefaultLoopInterval = 100'000;

// Version 3 markers and pause of one cycle; the pace is fixed.
constexpr std::int64_t kVersion3Extra = 3 * 10'000 + 20'000;
constexpr std::int64_t kVersion3Pace = 10'000;

int pairs(int packetLength) {
  return (packetLength + 1) / 2;
}

std::int64_t version3Period(int pairCount) {
  return kVersion3Extra + pairCount * kVersion3Pace;
}

std::int64_t multicastPeriod(int pairCount, std::int64_t pace) {
  return (pairCount + 1) * pace + kDefaultLoopInterval;
}

// One value and one position frame per byte, and three sync frames; the pace is that of a byte.
std::int64_t broadcastPeriod(int packetLength, std::int64_t pace) {
  return (2 * packetLength + 3) * pace / 2 + kDefaultLoopInterval;
}

RunContinuity::Timetable judge(const CycleClock& clock, std::int64_t period) {
  if (clock.explainedBy(period)) return RunContinuity::Timetable::kExplained;
  return clock.hasOutlier() ? RunContinuity::Timetable::kInterrupted : RunContinuity::Timetable::kUnexplained;
}

int version3Length(const PacketFields& fields) {
  return headerLength(Encoding::kVersion3) + fields.ssidLength + fields.passPhraseLength;
}

}  // namespace

SenderRecord::SenderRecord() = default;

void SenderRecord::assign(const MacAddress& sender) {
  *this = SenderRecord();
  sender_ = sender;
  used_ = true;
}

std::optional<Credentials> SenderRecord::observe(const Observation& observation) {
  lastHeard_ = observation.timeMicroseconds;
  ++framesHeard_;
  read(observation);
  if (version5_.takeRestart()) {
    version5Multicast_.restart();
    broadcast_.restart();
    version3_.noteBreak(lastHeard_, RunContinuity::Break::kUnexplained);
  }
  if (version3_.takeRestart()) {
    version3Multicast_.restart();
    version5_.noteBreak(lastHeard_, RunContinuity::Break::kUnexplained);
  }
  auto credentials = complete();
  if (!credentials || !isNews(*credentials)) return std::nullopt;
  credentials->sender = sender_;
  reported_ = credentials;
  return credentials;
}

void SenderRecord::read(const Observation& observation) {
  const int length = observation.frameLength;
  const std::int64_t time = observation.timeMicroseconds;
  const MacAddress& to = observation.destination;
  if (to == wire::kBroadcastAddress) {
    const auto likely = version5Multicast_.syncLength();
    broadcast_.observe(length, time, version5_, version3_, likely ? likely : version3Multicast_.syncLength());
    return;
  }
  const GroupOctets group{to[3], to[4], to[5]};
  if (!version5Multicast_.observe(group, length, time, version5_, version3_)) {
    version3Multicast_.observe(group, length, time, version3_, version5_);
  }
}

std::optional<Credentials> SenderRecord::complete() {
  const PacketView version5(Encoding::kVersion5, version5_, version3_);
  const PacketView version3(Encoding::kVersion3, version3_, version5_);
  if (!version5.fields() && !version3.fields()) return std::nullopt;
  const PacketFields& known = version5.fields() ? *version5.fields() : *version3.fields();
  const int version3Pairs = pairs(version3Length(known));
  const int version5Pairs = version5.fields() ? pairs(known.packetLength) : version5_.highestPair() + 1;
  const auto timetable5 = version5Timetable(version5Pairs, version3Pairs);
  const auto timetable3 = version3Timetable(version5Pairs, version3Pairs);
  if (settledVersion5_ == version5_.changes()) return std::nullopt;
  if (auto credentials = version5.read(timetable5, timetable3)) {
    settledVersion5_ = version5_.changes();
    if (!version5.exceeded()) return credentials;
    version5_.beginAnotherRun();
  }
  if (settledVersion3_ == version3_.changes()) return std::nullopt;
  auto credentials = version3.read(timetable3, timetable5);
  if (credentials) settledVersion3_ = version3_.changes();
  return credentials;
}

RunContinuity::Timetable SenderRecord::version5Timetable(int version5Pairs, int version3Pairs) const {
  const CycleClock& multicast = version5Multicast_.clock();
  const CycleClock& broadcast = broadcast_.clock();
  const std::int64_t mixed = version3Multicast_.heard() ? version3Period(version3Pairs) : 0;
  const auto inGroups = judge(multicast, multicastPeriod(version5Pairs, multicast.pace()) + mixed);
  const auto inLengths = judge(broadcast, broadcastPeriod(version5_.packetLength(), broadcast.pace()));
  return std::max(inGroups, inLengths);
}

RunContinuity::Timetable SenderRecord::version3Timetable(int version5Pairs, int version3Pairs) const {
  const std::int64_t pace = version5Multicast_.clock().pace();
  const std::int64_t mixed = version5Multicast_.heard() ? multicastPeriod(version5Pairs, pace) : 0;
  return judge(version3Multicast_.clock(), version3Period(version3Pairs) + mixed);
}

bool SenderRecord::isNews(const Credentials& credentials) const {
  if (!reported_ || credentials.ssid != reported_->ssid || credentials.passPhrase != reported_->passPhrase) {
    return true;
  }
  return credentials.encoding == Encoding::kVersion5 && credentials.append != reported_->append;
}

bool SenderRecord::hasProgress() const {
  return version5_.knownCount() + version3_.knownCount() > 0;
}

SenderProgress SenderRecord::progress() const {
  const bool version3 = version3_.knownCount() > version5_.knownCount();
  const PacketEvidence& evidence = version3 ? version3_ : version5_;
  SenderProgress progress;
  progress.sender = sender_;
  progress.encoding = version3 ? Encoding::kVersion3 : Encoding::kVersion5;
  progress.bytesTotal = evidence.packetLength();
  progress.bytesKnown =
      progress.bytesTotal == 0 ? evidence.knownCount() : std::min(evidence.knownCount(), progress.bytesTotal);
  progress.reported = reported_.has_value();
  return progress;
}

}  // namespace zor::receiver
