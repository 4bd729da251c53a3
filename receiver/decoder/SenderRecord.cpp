#include "receiver/decoder/SenderRecord.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace zor::receiver {
namespace {

std::int64_t version3Period(const PacketFields& fields) {
  return wire::kVersion3MarkersAndPause +
         framesOf(fields.packetLength(Encoding::version3)) * wire::kVersion3Pace;
}

/// Without the pause. One sync frame goes before the data frames.
std::int64_t multicastCycle(const PacketFields& fields, std::int64_t pace) {
  return (framesOf(fields.packetLength(Encoding::version5)) + 1) * pace;
}

/// Without the pause. A value and a position frame for each byte, and three sync frames. The pace is that of
/// a byte, so two frames.
std::int64_t broadcastCycle(const PacketFields& fields, std::int64_t pace) {
  return (2 * fields.packetLength(Encoding::version5) + 3) * pace / 2;
}

/// `cycle` is the time from one cycle to the next but for the pause.
Timetable judge(const CycleClock& clock, std::int64_t cycle) {
  if (clock.timeless()) return Timetable::explained;
  for (const std::int64_t pause : wire::kPauses) {
    if (clock.explainedBy(cycle + pause)) return Timetable::explained;
  }
  return clock.hasOutlier() ? Timetable::interrupted : Timetable::unexplained;
}

}  // namespace

std::optional<Credentials> SenderRecord::observe(const Observation& observation,
                                                 std::optional<Credentials>* rejected) {
  auto sorted = overheads_.observe(observation);
  if (overheads_.takeChange()) forget();
  if (overheads_.holds() && observation.destination == wire::kBroadcastAddress) return std::nullopt;
  if (!sorted) return std::nullopt;
  if (!sorted->isSingle) {
    read(sorted->frame, sorted->isLate);
  } else if (!readSingle(sorted->frame)) {
    return std::nullopt;
  }
  return conclude(rejected);
}

void SenderRecord::forget() {
  evidence_ = PacketEvidence();
  version5_ = MulticastChannel(kVersion5Multicast);
  version3_ = MulticastChannel(kVersion3Multicast);
  broadcast_ = BroadcastChannel();
  timeless_ = false;
  settledVersion5_.reset();
  settledVersion3_.reset();
}

/// Takes a frame whose other copy was not heard, if only one of both lengths is possible.
bool SenderRecord::readSingle(const Observation& frame) {
  const MacAddress& to = frame.destination;
  if (to == wire::kBroadcastAddress) {
    const auto length =
        broadcast_.shorterLength(frame.frameLength, overheads_.step(), frame.timeMicroseconds, evidence_);
    if (length) broadcast_.observe(*length, frame.timeMicroseconds, evidence_);
    return length.has_value();
  }
  GroupFrame group{{to[3], to[4], to[5]}, frame.frameLength, frame.timeMicroseconds};
  MulticastChannel& channel = channelOf(group.group);
  const bool holds = overheads_.holds();
  if (!channel.findLength(group, overheads_.step(), !holds, evidence_)) return false;
  if (holds) group.source = Source::length;
  if (group.source == Source::length) evidence_.noteStray();
  channel.observe(group, evidence_);
  return true;
}

MulticastChannel& SenderRecord::channelOf(const GroupOctets& group) {
  return MulticastChannel::carries(kVersion5Multicast, group) ? version5_ : version3_;
}

std::optional<Credentials> SenderRecord::conclude(std::optional<Credentials>* rejected) {
  shareTimelessness();
  findBases();
  broadcast_.placeLate(evidence_);
  if (evidence_.takeRestart()) {
    version5_.restart();
    version3_.restart();
    broadcast_.restart();
  }
  auto credentials = complete(rejected);
  if (!credentials || !isNews(*credentials)) return std::nullopt;
  return credentials;
}

bool SenderRecord::isPromising() const {
  const auto fields = evidence_.fields(Encoding::version3);
  return fields && 2 * evidence_.knownCount() >= fields->packetLength(Encoding::version3);
}

void SenderRecord::read(const Observation& frame, bool isLate) {
  const MacAddress& to = frame.destination;
  if (to == wire::kBroadcastAddress)
    return broadcast_.observe(frame.frameLength, frame.timeMicroseconds, evidence_);
  const Source source = overheads_.holds() ? Source::length : Source::group;
  if (source == Source::length) evidence_.noteStray();
  const GroupOctets group{to[3], to[4], to[5]};
  channelOf(group).observe({group, frame.frameLength, frame.timeMicroseconds, source, isLate}, evidence_);
}

void SenderRecord::shareTimelessness() {
  // A buffer that holds broadcasts holds multicasts as well, but not the other way round.
  const bool timeless =
      version5_.clock().timeless() || version3_.clock().timeless() || broadcast_.clock().timeless();
  const bool isNew = timeless && !timeless_;
  timeless_ = timeless;
  if (!timeless) return;
  version5_.noteTimeless();
  version3_.noteTimeless();
  if (!isNew) return;
  // The breaks were noticed by times, and mean nothing either, but for a silence.
  evidence_.excuseBreaks();
  noteSilence(version5_.clock(), Source::group);
  noteSilence(version3_.clock(), Source::group);
  noteSilence(broadcast_.clock(), Source::length);
}

void SenderRecord::noteSilence(const CycleClock& clock, Source source) {
  if (clock.silenceEnd()) evidence_.noteBreak(source, momentOf(*clock.silenceEnd()), false);
}

void SenderRecord::findBases() {
  if (const auto common = broadcast_.commonBase(version5_.pending()))
    version5_.adoptSyncLength(*common, evidence_);
  // The lengths of sync frames are the same on every channel unless the sender is configured otherwise.
  const auto syncLength = version5_.syncLength();
  const auto markerLength = version3_.syncLength();
  const auto sync1Length = broadcast_.base();
  version5_.findBase(evidence_, markerLength ? markerLength : sync1Length);
  version3_.findBase(evidence_, syncLength ? syncLength : sync1Length);
  broadcast_.findBase(evidence_, syncLength ? syncLength : markerLength);
}

std::optional<Credentials> SenderRecord::complete(std::optional<Credentials>* rejected) {
  const auto version5 = evidence_.fields(Encoding::version5);
  const auto version3 = evidence_.fields(Encoding::version3);
  if (!version3 || version5_.contested() || version3_.contested()) return std::nullopt;
  const Timetables clocks = timetables(version5 ? *version5 : *version3);
  if (settledVersion5_ != evidence_.changes()) {
    if (auto credentials = evidence_.read(Encoding::version5, clocks, rejected)) {
      settledVersion5_ = evidence_.changes();
      return credentials;
    }
  }
  if (settledVersion3_ == evidence_.changes()) return std::nullopt;
  auto credentials = evidence_.read(Encoding::version3, clocks, rejected);
  if (credentials) settledVersion3_ = evidence_.changes();
  return credentials;
}

Timetables SenderRecord::timetables(const PacketFields& fields) const {
  const CycleClock& multicast = version5_.clock();
  const CycleClock& broadcast = broadcast_.clock();
  const std::int64_t period3 = version3_.heard() ? version3Period(fields) : 0;
  const std::int64_t cycle5 = multicastCycle(fields, multicast.pace());
  const std::int64_t mixedInto = version5_.heard() ? cycle5 : 0;
  return {std::max(judge(multicast, cycle5 + period3), judge(version3_.clock(), mixedInto + period3)),
          judge(broadcast, broadcastCycle(fields, broadcast.pace()))};
}

bool SenderRecord::isNews(const Credentials& credentials) {
  const std::hash<std::string_view> hash;
  const std::size_t texts = hash(credentials.ssid + '\0' + credentials.passPhrase);
  const auto& bytes = credentials.append;
  const std::size_t append =
      hash(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  const bool sameTexts = reportedTexts_ == texts;
  const bool version3 = credentials.encoding == Encoding::version3;
  if (sameTexts && (version3 || reportedAppend_ == append)) return false;
  reportedTexts_ = texts;
  reportedAppend_ = append;
  return true;
}

SenderProgress SenderRecord::progress() const {
  const auto version5 = evidence_.fields(Encoding::version5);
  const auto version3 = evidence_.fields(Encoding::version3);
  SenderProgress progress;
  const bool older = version3_.heard() && !version5_.heard() && !version5;
  progress.encoding = older ? Encoding::version3 : Encoding::version5;
  if (version5) {
    progress.bytesTotal = version5->packetLength(Encoding::version5);
  } else if (older && version3) {
    progress.bytesTotal = version3->packetLength(Encoding::version3);
  }
  const int known = evidence_.knownCount();
  const int total = progress.bytesTotal == 0 ? wire::kMaxPacketBytes : progress.bytesTotal;
  progress.bytesKnown = std::min(known, total);
  progress.reported = reportedTexts_.has_value();
  return progress;
}

}  // namespace zor::receiver
