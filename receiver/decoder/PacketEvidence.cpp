#include "receiver/decoder/PacketEvidence.h"

#include <algorithm>

namespace zor::receiver {
namespace {

/// Sightings closer together may be copies of one frame: power-save buffers hold frames for up to 300 ms.
constexpr std::int64_t kSeparateSightings = 400'000;

/// The channels of one run start together. Even when 99 of 100 frames are lost, they rarely seem further
/// apart.
constexpr std::int64_t kChannelsStartWithin = 1'000'000;

/// Bytes from lengths are wrong now and then, but not this many in a row.
constexpr int kContradictionsOfAnotherRun = 3;

constexpr std::uint8_t kSightingsToTrust = 2;

/// A repeated value frame that comes too late looks like the next byte's, and does so again and again.
constexpr std::uint8_t kSightingsInDisorder = 5;

}  // namespace

PacketEvidence::PacketEvidence(Encoding encoding) : encoding_(encoding) {}

bool PacketEvidence::takeRestart() {
  const bool restarted = restarted_;
  restarted_ = false;
  return restarted;
}

void PacketEvidence::add(int index, std::uint8_t value, Source source, std::int64_t time) {
  if (index < 0 || index >= wire::kMaxPacketBytes) return;
  if (restarted_ && source == Source::length) return;  // Placed by what was known of the last run.
  if (source == Source::group) ++certainFrames_;
  if (!known(index)) {
    learn(index, value, source, time);
  } else if (byte(index) == value) {
    confirm(index, source, time);
  } else {
    contradict(index, value, source, time);
  }
}

void PacketEvidence::learn(int index, std::uint8_t value, Source source, std::int64_t time) {
  const auto slot = static_cast<std::size_t>(index);
  start_ = knownCount_ == 0 ? time : std::min(start_, time);
  if (!cells_[slot].known) ++knownCount_;
  ++changes_;
  bytes_[slot] = value;
  cells_[slot] = Cell{true, false, source, 1, time, time, time};
  if (source == Source::group) highestPair_ = std::max(highestPair_, index / 2);
}

void PacketEvidence::confirm(int index, Source source, std::int64_t time) {
  Cell& cell = cells_[static_cast<std::size_t>(index)];
  const auto agreement = agreementOf(index);
  const bool apart = time - cell.lastSighting >= kSeparateSightings;
  if (apart || source != cell.source || cell.sightings == 0) {
    if (cell.sightings < kSightingsInDisorder) ++cell.sightings;
    cell.lastSighting = time;
  }
  cell.lastSeen = std::max(cell.lastSeen, time);
  cell.disputed = false;
  if (source == Source::group) {
    cell.source = source;
    highestPair_ = std::max(highestPair_, index / 2);
  }
  if (agreement != RunContinuity::Agreement::nothing) contradictions_ = 0;
  continuity_.noteAgreement(cell.firstSeen, time, agreement);
}

void PacketEvidence::contradict(int index, std::uint8_t value, Source source, std::int64_t time) {
  const int length = packetLength();
  if (length != 0 && index >= length) return;  // Padding carries no meaning.
  Cell& cell = cells_[static_cast<std::size_t>(index)];
  const bool certain = source == Source::group && cell.source == Source::group;
  if (!certain && cell.sightings == 0) {
    learn(index, value, source, time);
    return;
  }
  if (certain || ++contradictions_ >= kContradictionsOfAnotherRun) {
    beginAnotherRun();
    learn(index, value, source, time);
    return;
  }
  strayFrames_ = true;
  cell.disputed = true;
  if (source == Source::length && cell.source == Source::group) return;
  if (source == Source::length && cell.sightings >= kSightingsToTrust) {
    --cell.sightings;
    return;
  }
  continuity_.noteBreak(time, RunContinuity::Break::contradiction);
  learn(index, value, source, time);
}

void PacketEvidence::beginAnotherRun() {
  const unsigned changes = changes_;
  const unsigned certainFrames = certainFrames_;
  *this = PacketEvidence(encoding_);
  changes_ = changes + 1;
  certainFrames_ = certainFrames;
  restarted_ = true;
}

void PacketEvidence::noteTimetable(const CycleClock& clock, CycleClock::Fit fit) {
  switch (fit) {
    case CycleClock::Fit::started:
      noteChannelStart(clock.cycleStart());
      break;
    case CycleClock::Fit::newCycle:
      noteBreak(clock.cycleStart(), RunContinuity::Break::provisional);
      break;
    case CycleClock::Fit::broken:
      noteBreak(clock.cycleStart(), RunContinuity::Break::unexplained);
      break;
    case CycleClock::Fit::timeless:
      excuseBreaks(clock);
      break;
    case CycleClock::Fit::onGrid:
    case CycleClock::Fit::nextCycle:
    case CycleClock::Fit::outlier:
      break;
  }
}

void PacketEvidence::excuseBreaks(const CycleClock& clock) {
  continuity_.excuseBreaks();
  if (clock.silenceEnd()) noteBreak(*clock.silenceEnd(), RunContinuity::Break::unexplained);
}

void PacketEvidence::noteChannelStart(std::int64_t time) {
  if (knownCount_ == 0 || time - start_ <= kChannelsStartWithin) return;
  continuity_.noteBreak(time, RunContinuity::Break::unexplained);
}

void PacketEvidence::doubtLengthBytes() {
  for (Cell& cell : cells_) {
    if (cell.source == Source::length) cell.sightings = 0;
  }
}

void PacketEvidence::dropLengthBytes() {
  for (Cell& cell : cells_) {
    if (!cell.known || cell.source == Source::group) continue;
    cell = Cell();
    --knownCount_;
    ++changes_;
  }
  highestPosition_ = -1;
  strayFrames_ = false;
  disorder_ = false;
}

void PacketEvidence::notePosition(int index) {
  highestPosition_ = std::max(highestPosition_, index);
  ++certainFrames_;
}

bool PacketEvidence::excludes(int index, std::uint8_t value) const {
  const Cell& cell = cells_[static_cast<std::size_t>(index)];
  const int needed = strayFrames_ ? kSightingsToTrust : 1;
  return cell.known && (cell.source == Source::group || cell.sightings >= needed) && byte(index) != value;
}

bool PacketEvidence::exceeds(int length) const {
  return highestPair_ > (length - 1) / 2 || highestPosition_ > length - 1;
}

std::optional<std::uint8_t> PacketEvidence::byteFor(Encoding encoding, int index) const {
  const int own = index - commonStart(encoding) + commonStart(encoding_);
  if (encoding != encoding_) {
    const auto header = fields();
    const bool common = header && index >= commonStart(encoding) &&
                        own < headerLength(encoding_) + header->ssidLength + header->passPhraseLength;
    if (!common) return std::nullopt;
  }
  if (own >= wire::kMaxPacketBytes || !known(own)) return std::nullopt;
  return byte(own);
}

std::optional<PacketFields> PacketEvidence::fields() const {
  for (int index = 0; index < headerLength(encoding_); ++index) {
    if (!known(index)) return std::nullopt;
  }
  return readHeader(encoding_, bytes_);
}

int PacketEvidence::packetLength() const {
  const auto header = fields();
  return header ? header->packetLength : 0;
}

bool PacketEvidence::firm(int index, RunContinuity::Timetable timetable) const {
  const Cell& cell = cells_[static_cast<std::size_t>(index)];
  if (!cell.known || cell.disputed) return false;
  if (!continuity_.current(cell.lastSeen, timetable)) return false;
  if (cell.source == Source::group) return true;
  const int needed = disorder_ ? kSightingsInDisorder : strayFrames_ ? kSightingsToTrust : 1;
  return cell.sightings >= needed;
}

RunContinuity::Agreement PacketEvidence::agreementOf(int index) const {
  // Equal lengths do not mean equal credentials.
  const int crc = encoding_ == Encoding::version5 ? wire::kVersion5Crc : wire::kVersion3Crc;
  if (index == crc) return RunContinuity::Agreement::crc;
  const auto header = fields();
  const bool tells = header && distinguishesRuns(*header, index - headerLength(encoding_));
  return tells ? RunContinuity::Agreement::text : RunContinuity::Agreement::nothing;
}

KnownBytes knownBytes(Encoding encoding, const PacketEvidence& own, const PacketEvidence& other) {
  KnownBytes known;
  for (int index = 0; index < wire::kMaxPacketBytes; ++index) {
    auto& byte = known[static_cast<std::size_t>(index)];
    byte = own.byteFor(encoding, index);
    if (!byte) byte = other.byteFor(encoding, index);
  }
  return known;
}

}  // namespace zor::receiver
