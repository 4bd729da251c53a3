#include "receiver/decoder/SenderRecord.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <span>
#include <string_view>
#include <utility>

namespace zor::receiver {
namespace {

std::int64_t version3Period(const PacketFields& fields) {
  return wire::kVersion3Markers + framesOf(fields.packetLength(Encoding::version3)) * wire::kVersion3Pace +
         wire::kVersion3Pause;
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

/// What a sender pauses after multicast cycles of this pace, unless it is configured otherwise.
std::span<const std::int64_t> pausesAt(std::int64_t pace) {
  if (pace > wire::kSlowestEvenPace) return wire::kPauses;
  if (pace > wire::kSlowestBurstPace) return wire::kNoPauses;
  return wire::kBurstPauses;
}

/// `cycle` is the time from one cycle to the next but for the pause.
Timetable judge(const CycleClock& clock, std::int64_t cycle, std::span<const std::int64_t> pauses) {
  if (clock.timeless()) return Timetable::explained;
  for (const std::int64_t pause : pauses) {
    if (clock.explainedBy(cycle, pause)) return Timetable::explained;
  }
  return clock.hasOutlier() ? Timetable::interrupted : Timetable::unexplained;
}

}  // namespace

std::optional<Credentials> SenderRecord::observe(const Observation& observation,
                                                 std::optional<Rejection>* rejected) {
  auto sorted = overheads_.observe(observation);
  if (overheads_.takeChange()) forget();
  if (!sorted) return std::nullopt;
  if (!sorted->isSingle) {
    read(sorted->frame);
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
  if (!channel.findLength(group, overheads_.step(), overheads_.holds(), evidence_)) return false;
  if (group.source == Source::length) evidence_.noteStray();
  channel.observe(group, evidence_);
  return true;
}

MulticastChannel& SenderRecord::channelOf(const GroupOctets& group) {
  return MulticastChannel::carries(kVersion5Multicast, group) ? version5_ : version3_;
}

std::optional<Credentials> SenderRecord::conclude(std::optional<Rejection>* rejected) {
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

void SenderRecord::read(const Observation& frame) {
  const MacAddress& to = frame.destination;
  if (to == wire::kBroadcastAddress)
    return broadcast_.observe(frame.frameLength, frame.timeMicroseconds, evidence_);
  const Source source = overheads_.holds() ? Source::length : Source::group;
  const GroupOctets group{to[3], to[4], to[5]};
  channelOf(group).observe({group, frame.frameLength, frame.timeMicroseconds, source}, evidence_);
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

/// Where copies are paired by their lengths only, two frames with the same bytes whose lengths lie twice the
/// step apart make a copy of one between them that nobody sent. True when the packet has such a frame.
bool SenderRecord::mayBeMadeUp(Encoding encoding) const {
  if (!overheads_.holds()) return false;
  const int step = overheads_.step();
  const auto pairAt = [&](int index) {
    return std::pair(evidence_.byteAt(encoding, 2 * index), evidence_.byteAt(encoding, 2 * index + 1));
  };
  for (int index = step; index + step < wire::kMaxPairs; ++index) {
    const auto pair = pairAt(index);
    if (pair.first && pair == pairAt(index - step) && pair == pairAt(index + step)) return true;
  }
  return false;
}

std::optional<Credentials> SenderRecord::complete(std::optional<Rejection>* rejected) {
  const auto version5 = evidence_.fields(Encoding::version5);
  const auto version3 = evidence_.fields(Encoding::version3);
  if (!version3 || version5_.contested() || version3_.contested()) return std::nullopt;
  const Timetables clocks = timetables(version5 ? *version5 : *version3);
  if (settledVersion5_ != evidence_.changes() && !mayBeMadeUp(Encoding::version5)) {
    if (auto credentials = evidence_.read(Encoding::version5, clocks, rejected)) {
      settledVersion5_ = evidence_.changes();
      return credentials;
    }
  }
  if (settledVersion3_ == evidence_.changes() || mayBeMadeUp(Encoding::version3)) return std::nullopt;
  auto credentials = evidence_.read(Encoding::version3, clocks, rejected);
  if (credentials) settledVersion3_ = evidence_.changes();
  return credentials;
}

Timetables SenderRecord::timetables(const PacketFields& fields) const {
  const CycleClock& broadcast = broadcast_.clock();
  return {std::max({judgeVersion5(fields), judgeVersion3(fields), judgeMix(fields)}),
          judge(broadcast, broadcastCycle(fields, broadcast.pace()), wire::kPauses)};
}

Timetable SenderRecord::judgeVersion5(const PacketFields& fields) const {
  const CycleClock& clock = version5_.clock();
  const std::int64_t mixedIn = version3_.heard() ? version3Period(fields) : 0;
  return judge(clock, multicastCycle(fields, clock.pace()) + mixedIn, pausesAt(clock.pace()));
}

Timetable SenderRecord::judgeVersion3(const PacketFields& fields) const {
  const std::int64_t period = version3Period(fields);
  if (!version5_.heard()) return judge(version3_.clock(), period, wire::kNoPauses);
  const std::int64_t pace = version5_.clock().pace();
  return judge(version3_.clock(), multicastCycle(fields, pace) + period, pausesAt(pace));
}

/// Where version 3 is mixed in, its cycles have their place between those of version 5. Elsewhere they are of
/// another run.
Timetable SenderRecord::judgeMix(const PacketFields& fields) const {
  const CycleClock& clock = version5_.clock();
  const bool areBothKnown = evidence_.fields(Encoding::version5) && version5_.syncLength() &&
                            version3_.syncLength() && clock.started() && version3_.clock().started();
  if (!areBothKnown || timeless_) return Timetable::explained;
  const std::int64_t end = version5_.timeOf(framesOf(fields.packetLength(Encoding::version5)));
  const std::int64_t between = version3_.timeOf(0) - wire::kVersion3Markers - end;
  for (const std::int64_t pause : pausesAt(clock.pace())) {
    const std::int64_t period = multicastCycle(fields, clock.pace()) + version3Period(fields) + pause;
    const std::int64_t off = std::abs(between - pause) % period;
    if (std::min(off, period - off) <= clock.tolerance()) return Timetable::explained;
  }
  return Timetable::unexplained;
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
