// When what is known of a packet is certain enough to be reported.

#include <algorithm>
#include <span>

#include "receiver/decoder/PacketEvidence.h"

namespace zor::receiver {
namespace {

/// Where strays were heard, this many bytes of a packet may rest on one sighting each: the CRC shows a single
/// wrong byte among right ones.
constexpr int kDoubtfulBytesAmongStrays = 1;

/// A copy of a frame with another overhead looks like a frame with another index. This many pairs of bytes
/// that come again, all at one distance, may be such copies.
constexpr int kRepeatsOfCopies = 5;

/// The CRC of version 5 does not cover the lengths.
bool isCovered(Encoding encoding, int index) {
  return encoding == Encoding::version3 || index == wire::kVersion5Crc || index >= wire::kVersion5Payload;
}

/// True when multicast frames of this packet may be copies of others of its frames. The groups of even and of
/// odd indices differ, so the copies are an even number of frames away.
bool mayHoldCopies(std::span<const std::uint8_t> packet) {
  for (std::size_t distance = 4; distance < packet.size(); distance += 4) {
    int repeats = 0;
    for (std::size_t at = 0; at + distance + 1 < packet.size(); at += 2) {
      if (std::equal(&packet[at], &packet[at] + 2, &packet[at + distance])) ++repeats;
    }
    if (repeats >= kRepeatsOfCopies) return true;
  }
  return false;
}

}  // namespace

bool PacketEvidence::isCertain(const Cell& seen) const {
  if (shared_ && seen.votes < kVotesToTrust) return false;
  const bool misleads = strays_ && (seen.flags & kByOrder) != 0;
  return (seen.flags & kInGroup) != 0 || seen.votes >= (misleads ? kVotesByOrder : kVotesToTrust);
}

/// A break of a source that is not read from only counts once its timetable is sure of it.
int PacketEvidence::oldestUsableStretch(Sources sources, const Timetables& timetables) const {
  int oldest = stretch_;
  for (; oldest > 0; --oldest) {
    const Break& between = breaks_[static_cast<std::size_t>(oldest)];
    const bool judged = (sources & flagOf(between.source)) != 0;
    const bool explained = timetables[static_cast<std::size_t>(between.source)] == Timetable::explained;
    if (!between.provisional || (judged && !explained)) break;
  }
  return oldest;
}

bool PacketEvidence::lengthConfirmed(int length) const {
  return lastInLengths_ == length - 1 || lastInGroups_ / 2 == (length - 1) / 2;
}

bool PacketEvidence::exceeds(int length) const {
  return lastInGroups_ / 2 > (length - 1) / 2 || lastInLengths_ > length - 1;
}

std::optional<Credentials> PacketEvidence::read(Encoding encoding, const Timetables& timetables,
                                                std::optional<Rejection>* rejected) {
  const auto header = fields(encoding);
  if (!header) return std::nullopt;
  // What one source tells by itself, the other does not delay.
  for (const Sources sources : {kInGroup, kInLength, static_cast<std::uint8_t>(kInGroup | kInLength)}) {
    if (auto credentials = readFrom(sources, encoding, *header, timetables, rejected)) return credentials;
  }
  return std::nullopt;
}

std::optional<Credentials> PacketEvidence::readFrom(Sources sources, Encoding encoding,
                                                    const PacketFields& fields, const Timetables& timetables,
                                                    std::optional<Rejection>* rejected) {
  for (int source = 0; source < kSources; ++source) {
    const bool judged = (sources & (1 << source)) != 0;
    if (judged && timetables[static_cast<std::size_t>(source)] == Timetable::interrupted) return std::nullopt;
  }
  const int length = fields.packetLength(encoding);
  const int oldest = oldestUsableStretch(sources, timetables);
  std::array<std::uint8_t, wire::kMaxPacketBytes> packet{};
  int doubtful = 0;
  int doubtfulLengths = 0;
  int doubtfulPiece = 0;
  bool byOrder = false;
  bool isSeenTwice = true;
  for (int index = 0; index < length; ++index) {
    const int piece = pieceOf(encoding, index);
    const Cell& seen = cell(piece);
    const bool isSeen = seen.votes > 0 && (seen.flags & sources) != 0 && (seen.flags & kFromOutlier) == 0;
    if (!isSeen || seen.stretch < oldest) return std::nullopt;
    packet[static_cast<std::size_t>(index)] = seen.value;
    isSeenTwice = isSeenTwice && seen.votes >= kVotesToTrust;
    if (isCertain(seen)) continue;
    ++(isCovered(encoding, index) ? doubtful : doubtfulLengths);
    doubtfulPiece = piece;
    byOrder = byOrder || (seen.flags & kByOrder) != 0;
  }
  if (shared_ && doubtful + doubtfulLengths > 0) return std::nullopt;
  if (strays_ && doubtful + doubtfulLengths > kDoubtfulBytesAmongStrays) return std::nullopt;
  const int maxDoubtfulLengths = !lengthConfirmed(length) ? 0 : strays_ || byOrder ? 1 : 3;
  if (doubtfulLengths > maxDoubtfulLengths) return std::nullopt;
  if (byOrder && !timeless_ && doubtful + doubtfulLengths > 1) return std::nullopt;
  const std::span<const std::uint8_t> bytes(packet.data(), static_cast<std::size_t>(length));
  if (timeless_ && !isSeenTwice && mayHoldCopies(bytes)) return std::nullopt;
  const bool beyondEnd = encoding == Encoding::version5 && exceeds(length);
  if (crcHolds(encoding, bytes)) {
    if (!beyondEnd) return readCredentials(encoding, fields, bytes);
    restart();
  } else if (doubtful == 1 && doubtfulLengths == 0) {
    cell(doubtfulPiece) = Cell();
    --knownCount_;
    ++changes_;
  } else if (!beyondEnd && rejected != nullptr && rejectedAt_ != changes_) {
    rejectedAt_ = changes_;
    const int crc = encoding == Encoding::version5 ? wire::kVersion5Crc : wire::kVersion3Crc;
    *rejected = Rejection{readCredentials(encoding, fields, bytes), packet[static_cast<std::size_t>(crc)]};
  }
  return std::nullopt;
}

}  // namespace zor::receiver
