#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "receiver/decoder/PacketLayout.h"

namespace zor::receiver {

/// A time in milliseconds, modulo a range of some days.
using Moment = std::int32_t;
Moment momentOf(std::int64_t microseconds);

/// Where a piece was read: in a group address, whose frame states the index, or in a broadcast length, whose
/// index follows from its neighbours.
enum class Source : std::uint8_t { group, length };
inline constexpr int kSources = 2;

/// One reading of a piece.
struct Sighting {
  Moment seen = 0;
  Source source = Source::group;
  bool isOutlier = false;  ///< Its frame was off the grid of its channel, so another run may have sent it.
};

/// What the clocks of a source say about the frames heard: all are of one timetable; a cycle came that the
/// timetable does not explain; or the last frame was out of place and may be the first of another run.
/// Ordered from good to bad.
enum class Timetable : std::uint8_t { explained, unexplained, interrupted };
using Timetables = std::array<Timetable, kSources>;

/// What is known of the packet of one sender: the value of each piece and how certain it is.
///
/// Frames of groups do not come up by chance, so what they say is certain. A value from a length may be
/// someone else's: each sighting is a vote for a value, and each other value is a vote against it.
///
/// A break is a moment at which another run may have begun. Breaks divide the time into stretches, and pieces
/// last seen in an earlier stretch do not count, until the CRC and a byte of the texts are seen again with
/// the values they had: then the run is the same. A break that a timetable may yet explain is provisional.
class PacketEvidence {
 public:
  /// Takes one piece. Others than 0 to kPieces - 1 are ignored. What only outliers have shown is not
  /// reported.
  void add(int piece, std::uint8_t value, const Sighting& sighting);

  /// The outlier that showed this piece is of the run after all. Pieces other than 0 to kPieces - 1 are
  /// ignored.
  void settle(int piece);

  /// Takes one piece from a length that was placed by the order of frames, not by their times.
  void addByOrder(int piece, std::uint8_t value, Moment seen);

  /// A frame was heard that carries this byte, of the version 5 packet: the packet is not shorter. A
  /// multicast frame carries two bytes, so its index tells the length only roughly.
  void noteLastByte(int index, Source source);

  /// One of this sender's broadcasts was not part of the encoding by its length, so others may not be either.
  void noteForeign() { strays_ = foreign_ = true; }

  /// The same by its time or its place, which may have other reasons.
  void noteStray() { strays_ = true; }

  /// Another run may have begun at this moment, as far as the clocks of a source can say.
  void noteBreak(Source source, Moment at, bool provisional);

  /// The times by which breaks were noticed mean nothing.
  void excuseBreaks();

  /// Forgets the pieces that come from broadcast lengths only.
  void dropLengthPieces();

  /// Another run has begun: forgets everything.
  void restart();

  /// True once after a restart.
  bool takeRestart();

  /// The byte at an index of a packet, if it is known.
  std::optional<std::uint8_t> byteAt(Encoding encoding, int index) const;

  /// True when the byte is certain enough to say that it does not have this value.
  bool excludes(int piece, std::uint8_t value) const;

  /// True when a group showed another value, and at least this many sightings agree on that value.
  bool groupExcludes(int piece, std::uint8_t value, int sightings) const;

  int knownCount() const { return knownCount_; }

  /// Grows whenever a piece is learnt, replaced or forgotten.
  unsigned changes() const { return changes_; }

  /// The fields of a packet's header, once known and possible.
  std::optional<PacketFields> fields(Encoding encoding) const;

  /// Length of the version 5 packet by its own header, 0 while that is unknown or impossible.
  int packetLength() const;

  /// Returns the credentials once every piece is certain enough and the CRC holds. When only the CRC speaks
  /// against the packet, once for each new piece, it goes to `rejected` unless that is null.
  std::optional<Credentials> read(Encoding encoding, const Timetables& timetables,
                                  std::optional<Rejection>* rejected);

 private:
  struct Cell {
    Moment lastSeen = 0;
    std::uint8_t value = 0;
    std::uint8_t votes = 0;  ///< 0 while unknown.
    std::uint8_t flags = 0;
    std::uint8_t stretch = 0;  ///< In which it was last seen.

    void clear(int flag) { flags = static_cast<std::uint8_t>(flags & ~flag); }
  };

  struct Break {
    Moment at = 0;
    Source source = Source::group;
    bool provisional = false;
  };

  /// Votes of a value that need no further sighting.
  static constexpr std::uint8_t kVotesToTrust = 2;

  /// Votes of a value that only order has placed, where strays were heard: one that is often heard misleads
  /// in the same way each time.
  static constexpr std::uint8_t kVotesByOrder = 5;

  // Flags of a cell: where it was seen.
  static constexpr std::uint8_t kInGroup = 1;
  static constexpr std::uint8_t kInLength = 2;
  static constexpr std::uint8_t kByOrder = 4;      // Placed by the order of frames only.
  static constexpr std::uint8_t kFromOutlier = 8;  // Only in frames that may be of another run.

  static constexpr std::uint8_t flagOf(Source source) {
    return source == Source::group ? kInGroup : kInLength;
  }

  static constexpr std::uint8_t flagsOf(const Sighting& sighting) {
    return flagOf(sighting.source) | (sighting.isOutlier ? kFromOutlier : 0);
  }

  static constexpr int kMaxBreaks = 9;

  /// Which sources a packet may be read from, and by whose timetables it is judged.
  using Sources = std::uint8_t;

  Cell& cell(int piece) { return cells_[static_cast<std::size_t>(piece)]; }
  const Cell& cell(int piece) const { return cells_[static_cast<std::size_t>(piece)]; }
  void clash(Moment seen);
  int stretchAt(const Sighting& sighting) const;
  void learn(int piece, std::uint8_t value, const Sighting& sighting);
  void confirm(int piece, const Sighting& sighting);
  void contradict(int piece, std::uint8_t value, const Sighting& sighting);
  void noteAgreement(int piece, int stretch);
  void joinStretches(int first);
  int oldestUsableStretch(Sources sources, const Timetables& timetables) const;
  bool isCertain(const Cell& seen) const;
  bool lengthConfirmed(int length) const;
  bool exceeds(int length) const;
  std::optional<Credentials> readFrom(Sources sources, Encoding encoding, const PacketFields& fields,
                                      const Timetables& timetables, std::optional<Rejection>* rejected);

  std::array<Cell, kPieces> cells_{};
  int knownCount_ = 0;
  unsigned changes_ = 0;
  bool strays_ = false;
  bool foreign_ = false;
  bool restarted_ = false;
  bool timeless_ = false;
  bool clashed_ = false;
  bool shared_ = false;  ///< Two phones may send under this address.
  Moment lastClash_ = 0;
  std::array<Break, kMaxBreaks + 1> breaks_{};  ///< At the beginning of each stretch but the first.
  int stretch_ = 0;                             ///< Number of breaks so far.
  int crcAgrees_ = -1;      ///< Stretch in which the CRC had the value that it has in the present one, or -1.
  int textAgrees_ = -1;     ///< The same for a byte of the texts.
  int contradictions_ = 0;  ///< In a row.
  int lastInGroups_ = -1;
  int lastInLengths_ = -1;
  unsigned rejectedAt_ = 0;  ///< changes() at the last rejection.
};

}  // namespace zor::receiver
