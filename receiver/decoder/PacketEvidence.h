#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "receiver/decoder/Credentials.h"
#include "receiver/decoder/CycleClock.h"
#include "receiver/decoder/PacketReader.h"
#include "receiver/decoder/RunContinuity.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// What is known of the packet of one sender: the value of each byte and how certain it is.
///
/// Group addresses do not come up by chance, but a byte may still be wrong: a length may belong to someone
/// else's broadcast, a value may have been given the wrong index, or another run may have started. So every
/// byte keeps the times when it was first and last seen. When another value of a byte is seen, the byte is in
/// doubt until its old value is seen again; once a new value replaces it, the whole packet is in doubt.
class PacketEvidence {
 public:
  /// Where a byte was read: in a group address, whose frame states the index, or in a broadcast length, whose
  /// index follows from its neighbours.
  enum class Source : std::uint8_t { group, length };

  explicit PacketEvidence(Encoding encoding);

  /// Takes one byte. An index outside 0 to wire::kMaxPacketBytes - 1 is ignored.
  void add(int index, std::uint8_t value, Source source, std::int64_t time);

  /// A position frame was heard where the timetable or its neighbours put it.
  void notePosition(int index);

  /// One of this sender's broadcasts was not part of the encoding, so others may not be either: a byte from a
  /// length has to be seen more often before it counts.
  void noteStrayFrame() { strayFrames_ = true; }

  /// Broadcasts were heard out of order, so what follows from their order has to be seen more often still.
  void noteDisorder() { disorder_ = true; }

  /// Counts what was certainly of this encoding: bytes from groups, and positions where they were expected.
  unsigned certainFrames() const { return certainFrames_; }

  /// A channel's clock has just judged a frame.
  void noteTimetable(const CycleClock& clock, CycleClock::Fit fit);

  /// Another run may have started at this time.
  void noteBreak(std::int64_t time, RunContinuity::Break kind) { continuity_.noteBreak(time, kind); }

  /// The times by which bytes were placed mean nothing: bytes that come from broadcast lengths only have to
  /// be seen again before they count.
  void doubtLengthBytes();

  /// The times by which breaks were noticed mean nothing: forgets the breaks, except for a silence that the
  /// channel's clock has noticed.
  void excuseBreaks(const CycleClock& clock);

  /// True when all bytes certainly come from one run.
  bool ofOneRun(RunContinuity::Timetable timetable) const { return continuity_.unbroken(timetable); }

  /// Forgets the bytes that come from broadcast lengths only.
  void dropLengthBytes();

  /// Here and below, the index of a byte is 0 to wire::kMaxPacketBytes - 1.
  bool known(int index) const { return cells_[static_cast<std::size_t>(index)].known; }
  std::uint8_t byte(int index) const { return bytes_[static_cast<std::size_t>(index)]; }

  /// True when the byte is certain enough to say that it does not have this value.
  bool excludes(int index, std::uint8_t value) const;

  int knownCount() const { return knownCount_; }

  /// Grows whenever a byte is learnt, replaced or forgotten.
  unsigned changes() const { return changes_; }

  /// The byte at an index of a packet in the given encoding, if this evidence has it. From the SSID length to
  /// the end of the pass phrase the packets of both encodings are the same.
  std::optional<std::uint8_t> byteFor(Encoding encoding, int index) const;

  /// Fields of the header, once it is known and possible.
  std::optional<PacketFields> fields() const;

  /// Number of bytes the packet has by its own header, 0 while that is unknown or impossible.
  int packetLength() const;

  /// True when the byte may be used in a packet whose CRC holds.
  bool firm(int index, RunContinuity::Timetable timetable) const;

  /// True when a frame was heard that lies beyond the end of a packet of this length.
  bool exceeds(int length) const;

  /// Drops the evidence: a run with other lengths or other bytes has started.
  void beginAnotherRun();

  /// True once after beginAnotherRun().
  bool takeRestart();

 private:
  struct Cell {
    bool known = false;
    bool disputed = false;  ///< Another value was seen since this one.
    Source source = Source::length;
    std::uint8_t sightings = 0;
    std::int64_t firstSeen = 0;
    std::int64_t lastSeen = 0;
    std::int64_t lastSighting = 0;  ///< Last time that counted as a sighting of its own.
  };

  void noteChannelStart(std::int64_t time);
  void learn(int index, std::uint8_t value, Source source, std::int64_t time);
  void confirm(int index, Source source, std::int64_t time);
  void contradict(int index, std::uint8_t value, Source source, std::int64_t time);
  RunContinuity::Agreement agreementOf(int index) const;

  Encoding encoding_;
  std::array<std::uint8_t, wire::kMaxPacketBytes> bytes_{};
  std::array<Cell, wire::kMaxPacketBytes> cells_{};
  int knownCount_ = 0;
  unsigned changes_ = 0;
  bool strayFrames_ = false;
  bool disorder_ = false;
  bool restarted_ = false;
  int highestPair_ = -1;  ///< Index of a multicast frame.
  int highestPosition_ = -1;
  int contradictions_ = 0;  ///< In a row.
  unsigned certainFrames_ = 0;
  std::int64_t start_ = 0;  ///< When the first of the bytes was learnt.
  RunContinuity continuity_;
};

/// The bytes of a packet that are known from any source.
using KnownBytes = std::array<std::optional<std::uint8_t>, wire::kMaxPacketBytes>;

/// Collects the bytes known from the evidence of an encoding and, for the common part, from that of the other
/// one.
KnownBytes knownBytes(Encoding encoding, const PacketEvidence& own, const PacketEvidence& other);

}  // namespace zor::receiver
