#include "receiver/decoder/SenderRecord.h"

#include <algorithm>

#include "receiver/decoder/PacketView.h"

namespace zor::receiver {
namespace {

/// Senders pause this long between cycles unless they are configured otherwise.
constexpr std::int64_t kDefaultLoopInterval = 100'000;

/// Markers and pause of a version 3 cycle, whose pace is fixed.
constexpr std::int64_t kVersion3Extra = 3 * 10'000 + 20'000;
constexpr std::int64_t kVersion3Pace = 10'000;

/// After this many changes from one encoding to the other, frames of each lie between frames of the other.
constexpr int kChangesOfInterleaving = 2;

int pairs(int packetLength) {
  return (packetLength + 1) / 2;
}

std::int64_t version3Period(int packetLength) {
  return kVersion3Extra + pairs(packetLength) * kVersion3Pace;
}

std::int64_t multicastPeriod(int packetLength, std::int64_t pace) {
  return (pairs(packetLength) + 1) * pace + kDefaultLoopInterval;
}

/// A value and a position frame per byte, and three sync frames. The pace is that of a byte, so two frames.
std::int64_t broadcastPeriod(int packetLength, std::int64_t pace) {
  return (2 * packetLength + 3) * pace / 2 + kDefaultLoopInterval;
}

RunContinuity::Timetable judge(const CycleClock& clock, std::int64_t period) {
  if (clock.timeless() || clock.explainedBy(period)) return RunContinuity::Timetable::explained;
  return clock.hasOutlier() ? RunContinuity::Timetable::interrupted : RunContinuity::Timetable::unexplained;
}

/// Of a packet with these texts. Append bytes are known from the version 5 packet only.
int version5Length(const PacketFields& fields) {
  return headerLength(Encoding::version5) + fields.ssidLength + fields.passPhraseLength + fields.appendLength;
}

int version3Length(const PacketFields& fields) {
  return headerLength(Encoding::version3) + fields.ssidLength + fields.passPhraseLength;
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
  const unsigned version5Frames = version5_.certainFrames();
  const unsigned version3Frames = version3_.certainFrames();
  read(observation);
  shareTimelessness();
  findBases();
  broadcast_.placeLate(version5_);
  noteOrder(version5Frames, version3Frames);
  passOnRestarts();
  auto credentials = complete();
  if (!credentials || !isNews(*credentials)) return std::nullopt;
  credentials->sender = sender_;
  reported_ = credentials;
  return credentials;
}

void SenderRecord::passOnRestarts() {
  if (version5_.takeRestart()) {
    encodingChanges_ = 0;
    version5Multicast_.restart();
    broadcast_.restart();
    version3_.noteBreak(lastHeard_, RunContinuity::Break::unexplained);
  }
  if (version3_.takeRestart()) {
    encodingChanges_ = 0;
    version3Multicast_.restart();
    version5_.noteBreak(lastHeard_, RunContinuity::Break::unexplained);
  }
}

void SenderRecord::read(const Observation& observation) {
  const int length = observation.frameLength;
  const std::int64_t time = observation.timeMicroseconds;
  const MacAddress& to = observation.destination;
  if (to == wire::kBroadcastAddress) {
    broadcast_.observe(length, time, version5_);
    return;
  }
  const GroupOctets group{to[3], to[4], to[5]};
  if (!version5Multicast_.observe(group, length, time, version5_)) {
    version3Multicast_.observe(group, length, time, version3_);
  }
}

void SenderRecord::shareTimelessness() {
  const bool multicast = version5Multicast_.clock().timeless() || version3Multicast_.clock().timeless();
  // A buffer that holds broadcasts holds multicasts as well, but not the other way round.
  if (!multicast && !broadcast_.clock().timeless()) return;
  version5Multicast_.noteTimeless(version5_);
  version3Multicast_.noteTimeless(version3_);
}

void SenderRecord::findBases() {
  if (const auto common = broadcast_.commonBase(version5Multicast_.pending())) {
    version5Multicast_.adoptSyncLength(*common, version5_);
  }
  // The lengths of sync frames are the same on every channel unless the sender is configured otherwise.
  const auto syncLength = version5Multicast_.syncLength();
  const auto markerLength = version3Multicast_.syncLength();
  const auto sync1Length = broadcast_.base();
  const auto header = version5_.fields();
  const auto fields = header ? header : version3_.fields();
  const int length5 = fields ? version5Length(*fields) : 0;
  const int length3 = fields ? version3Length(*fields) : 0;
  version5Multicast_.findBase(version5_, version3_, markerLength ? markerLength : sync1Length, length5);
  version3Multicast_.findBase(version3_, version5_, syncLength ? syncLength : sync1Length, length3);
  broadcast_.findBase(version5_, version3_, syncLength ? syncLength : markerLength, length5);
}

void SenderRecord::noteOrder(unsigned version5Frames, unsigned version3Frames) {
  std::optional<Encoding> heard;
  if (version5_.certainFrames() != version5Frames) heard = Encoding::version5;
  if (version3_.certainFrames() != version3Frames) heard = Encoding::version3;
  if (!heard) return;
  if (lastEncoding_ && lastEncoding_ != heard && encodingChanges_ < kChangesOfInterleaving)
    ++encodingChanges_;
  lastEncoding_ = heard;
}

std::optional<Credentials> SenderRecord::complete() {
  const bool interleaved = encodingChanges_ >= kChangesOfInterleaving;
  const PacketView version5(Encoding::version5, version5_, version3_, interleaved);
  const PacketView version3(Encoding::version3, version3_, version5_, interleaved);
  if (!version5.fields() && !version3.fields()) return std::nullopt;
  const PacketFields& known = version5.fields() ? *version5.fields() : *version3.fields();
  const auto timetable5 = version5Timetable(known);
  const auto timetable3 = version3Timetable(known);
  if (settledVersion5_ != version5_.changes()) {
    if (auto credentials = version5.read(timetable5, timetable3)) {
      settledVersion5_ = version5_.changes();
      if (!version5.exceeded()) return credentials;
      version5_.beginAnotherRun();
    }
  }
  if (settledVersion3_ == version3_.changes()) return std::nullopt;
  auto credentials = version3.read(timetable3, timetable5);
  if (credentials) settledVersion3_ = version3_.changes();
  return credentials;
}

RunContinuity::Timetable SenderRecord::version5Timetable(const PacketFields& fields) const {
  const CycleClock& multicast = version5Multicast_.clock();
  const CycleClock& broadcast = broadcast_.clock();
  const int length = version5Length(fields);
  const std::int64_t mixed = version3Multicast_.heard() ? version3Period(version3Length(fields)) : 0;
  const auto inGroups = judge(multicast, multicastPeriod(length, multicast.pace()) + mixed);
  const auto inLengths = judge(broadcast, broadcastPeriod(length, broadcast.pace()));
  return std::max(inGroups, inLengths);
}

RunContinuity::Timetable SenderRecord::version3Timetable(const PacketFields& fields) const {
  const std::int64_t pace = version5Multicast_.clock().pace();
  const std::int64_t mixed = version5Multicast_.heard() ? multicastPeriod(version5Length(fields), pace) : 0;
  return judge(version3Multicast_.clock(), version3Period(version3Length(fields)) + mixed);
}

bool SenderRecord::isNews(const Credentials& credentials) const {
  if (!reported_ || credentials.ssid != reported_->ssid || credentials.passPhrase != reported_->passPhrase) {
    return true;
  }
  return credentials.encoding == Encoding::version5 && credentials.append != reported_->append;
}

bool SenderRecord::hasProgress() const {
  return version5_.knownCount() + version3_.knownCount() > 0;
}

SenderProgress SenderRecord::progress() const {
  const bool version3 = version3_.knownCount() > version5_.knownCount();
  const PacketEvidence& evidence = version3 ? version3_ : version5_;
  SenderProgress progress;
  progress.sender = sender_;
  progress.encoding = version3 ? Encoding::version3 : Encoding::version5;
  progress.bytesTotal = evidence.packetLength();
  progress.bytesKnown =
      progress.bytesTotal == 0 ? evidence.knownCount() : std::min(evidence.knownCount(), progress.bytesTotal);
  progress.reported = reported_.has_value();
  return progress;
}

}  // namespace zor::receiver
