#include "receiver/decoder/PacketEvidence.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace zor::receiver {
namespace {

constexpr std::int64_t kMicrosecondsPerMillisecond = 1000;

/// Sightings closer together may be copies of one frame: power-save buffers hold frames for up to 300 ms.
constexpr Moment kSeparateSightings = 400;

/// Values from lengths are wrong now and then, but not this many in a row.
constexpr int kContradictionsOfAnotherRun = 3;

/// Two runs that clash again within this time are of two phones.
constexpr Moment kClashesOfTwoPhones = 5'000;

bool isCrc(int piece) {
  return piece == wire::kVersion5Crc || piece == kVersion3CrcPiece;
}

}  // namespace

Moment momentOf(std::int64_t microseconds) {
  constexpr Moment kRange = std::numeric_limits<Moment>::max() / 2;
  return static_cast<Moment>(microseconds / kMicrosecondsPerMillisecond % kRange);
}

bool PacketEvidence::takeRestart() {
  const bool restarted = restarted_;
  restarted_ = false;
  return restarted;
}

void PacketEvidence::restart() {
  PacketEvidence fresh;
  fresh.changes_ = changes_ + 1;
  fresh.strays_ = strays_;
  fresh.foreign_ = foreign_;
  fresh.clashed_ = clashed_;
  fresh.shared_ = shared_;
  fresh.lastClash_ = lastClash_;
  fresh.restarted_ = true;
  *this = fresh;
}

void PacketEvidence::add(int piece, std::uint8_t value, const Sighting& sighting) {
  if (piece < 0 || piece >= kPieces) return;
  shared_ = shared_ && sighting.seen - lastClash_ < kClashesOfTwoPhones;
  if (restarted_ && sighting.source == Source::length) return;  // Placed by what was known of the last run.
  if (cell(piece).votes == 0) {
    learn(piece, value, sighting);
  } else if (cell(piece).value == value) {
    confirm(piece, sighting);
  } else {
    contradict(piece, value, sighting);
  }
}

void PacketEvidence::settle(int piece) {
  if (piece >= 0 && piece < kPieces) cell(piece).clear(kFromOutlier);
}

void PacketEvidence::addByOrder(int piece, std::uint8_t value, Moment seen) {
  const Cell before = cell(piece);
  const bool placedByTime = before.votes > 0 && before.value == value && (before.flags & kByOrder) == 0;
  add(piece, value, {seen, Source::length});
  if (!placedByTime && cell(piece).value == value) cell(piece).flags |= kByOrder;
}

void PacketEvidence::learn(int piece, std::uint8_t value, const Sighting& sighting) {
  if (cell(piece).votes == 0) ++knownCount_;
  ++changes_;
  cell(piece) =
      Cell{sighting.seen, value, 1, flagsOf(sighting), static_cast<std::uint8_t>(stretchAt(sighting))};
}

/// Group frames that waited for their length base may be older than breaks.
int PacketEvidence::stretchAt(const Sighting& sighting) const {
  int stretch = stretch_;
  if (sighting.source == Source::length) return stretch;
  while (stretch > 0 && sighting.seen < breaks_[static_cast<std::size_t>(stretch)].at) --stretch;
  return stretch;
}

void PacketEvidence::confirm(int piece, const Sighting& sighting) {
  Cell& known = cell(piece);
  const int stretch = known.stretch;
  const int present = stretchAt(sighting);
  const bool old = stretch < present;
  const bool apart = std::abs(sighting.seen - known.lastSeen) >= kSeparateSightings;
  if (apart && known.votes < kVotesByOrder) ++known.votes;
  if (apart || old || sighting.source == Source::group) known.lastSeen = sighting.seen;
  known.flags |= flagOf(sighting.source);
  known.clear(sighting.isOutlier ? kByOrder : kByOrder | kFromOutlier);
  known.stretch = static_cast<std::uint8_t>(std::max(stretch, present));
  if (old && present == stretch_) noteAgreement(piece, stretch);
  const auto header = fields(Encoding::version5);
  if (isCrc(piece) || (header && header->distinguishesRuns(piece))) contradictions_ = 0;
}

void PacketEvidence::noteAgreement(int piece, int stretch) {
  const auto header = fields(Encoding::version3);
  if (isCrc(piece)) crcAgrees_ = std::max(crcAgrees_, stretch);
  if (header && header->distinguishesRuns(piece)) textAgrees_ = std::max(textAgrees_, stretch);
  if (crcAgrees_ >= 0 && textAgrees_ >= 0) joinStretches(std::max(crcAgrees_, textAgrees_));
}

/// The run of the present stretch is that of `first`.
void PacketEvidence::joinStretches(int first) {
  for (Cell& known : cells_) known.stretch = static_cast<std::uint8_t>(std::min<int>(known.stretch, first));
  stretch_ = first;
  crcAgrees_ = -1;
  textAgrees_ = -1;
}

void PacketEvidence::contradict(int piece, std::uint8_t value, const Sighting& sighting) {
  const int length = packetLength();
  if (length != 0 && piece >= length && piece != kVersion3CrcPiece) return;  // Padding carries no meaning.
  Cell& known = cell(piece);
  const Source source = sighting.source;
  const bool certain = source == Source::group && (known.flags & kInGroup) != 0;
  if (certain || ++contradictions_ >= kContradictionsOfAnotherRun) {
    clash(sighting.seen);
    learn(piece, value, sighting);
    return;
  }
  const bool old = known.stretch < stretch_;
  if (!old) strays_ = true;
  if (source == Source::length && (known.flags & kInGroup) != 0) return;
  if (source == Source::length && !old && known.votes > 1) {
    --known.votes;
  } else {
    learn(piece, value, sighting);
  }
}

/// Two runs contradict each other. A run that replaces another contradicts it once. Two phones that share an
/// address, as behind a range extender, contradict each other again and again.
void PacketEvidence::clash(Moment seen) {
  shared_ = clashed_ && seen - lastClash_ < kClashesOfTwoPhones;
  clashed_ = true;
  lastClash_ = seen;
  restart();
}

void PacketEvidence::noteBreak(Source source, Moment at, bool provisional) {
  if (stretch_ == kMaxBreaks) {
    std::move(breaks_.begin() + 2, breaks_.end(), breaks_.begin() + 1);
    for (Cell& known : cells_) known.stretch = static_cast<std::uint8_t>(std::max(known.stretch - 1, 0));
    --stretch_;
  }
  breaks_[static_cast<std::size_t>(++stretch_)] = {at, source, provisional};
  for (Cell& known : cells_) {
    if (known.votes > 0 && known.lastSeen >= at) known.stretch = static_cast<std::uint8_t>(stretch_);
  }
  crcAgrees_ = -1;
  textAgrees_ = -1;
}

void PacketEvidence::excuseBreaks() {
  timeless_ = true;
  for (int piece = 0; piece < kPieces; ++piece) settle(piece);
  joinStretches(0);
}

void PacketEvidence::dropLengthPieces() {
  for (Cell& seen : cells_) {
    if (seen.votes == 0 || (seen.flags & kInGroup) != 0) continue;
    seen = Cell();
    --knownCount_;
    ++changes_;
  }
  lastInLengths_ = -1;
  strays_ = foreign_;
}

void PacketEvidence::noteLastByte(int index, Source source) {
  int& last = source == Source::group ? lastInGroups_ : lastInLengths_;
  last = std::max(last, index);
}

std::optional<std::uint8_t> PacketEvidence::byteAt(Encoding encoding, int index) const {
  const int piece = pieceOf(encoding, index);
  if (piece >= kPieces || cell(piece).votes == 0) return std::nullopt;
  return cell(piece).value;
}

bool PacketEvidence::excludes(int piece, std::uint8_t value) const {
  const Cell& seen = cell(piece);
  const int needed = strays_ ? kVotesToTrust : 1;
  return seen.value != value && seen.votes > 0 && ((seen.flags & kInGroup) != 0 || seen.votes >= needed);
}

bool PacketEvidence::groupExcludes(int piece, std::uint8_t value, int sightings) const {
  const Cell& seen = cell(piece);
  return seen.value != value && (seen.flags & kInGroup) != 0 && seen.votes >= sightings;
}

std::optional<PacketFields> PacketEvidence::fields(Encoding encoding) const {
  const Cell& head = cell(wire::kVersion5Head);
  const Cell& ssid = cell(wire::kVersion5SsidLength);
  const Cell& passPhrase = cell(wire::kVersion5PassPhraseLength);
  if (ssid.votes == 0 || passPhrase.votes == 0) return std::nullopt;
  if (encoding == Encoding::version3) return readFields(std::nullopt, ssid.value, passPhrase.value);
  if (head.votes == 0) return std::nullopt;
  return readFields(head.value, ssid.value, passPhrase.value);
}

int PacketEvidence::packetLength() const {
  const auto header = fields(Encoding::version5);
  return header ? header->packetLength(Encoding::version5) : 0;
}

}  // namespace zor::receiver
