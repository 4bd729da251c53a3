#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "receiver/Credentials.h"
#include "receiver/CycleClock.h"
#include "receiver/PacketReader.h"
#include "receiver/RunContinuity.h"
#include "receiver/WireConstants.h"

namespace zor::receiver {

/// What is known of the packet of one sender: a value per byte and how well each is founded.
///
/// Frames cannot be forged by chance, but a byte may still be wrong: a length may be a stranger's, a value
/// may have been given the wrong index, or another run may have begun. So every byte keeps when it was seen
/// first and last. A byte of which another value was seen is in doubt until its old value is seen again, and
/// the whole packet is once a value gives way to another one.
class PacketEvidence {
 public:
  /// Where a byte was read: in a group address, which names its index beyond doubt, or in a broadcast length,
  /// whose index is concluded from its neighbours.
  enum class Source : std::uint8_t { kGroup, kLength };

  explicit PacketEvidence(Encoding encoding);

  /// Takes one byte.
  /// \param index 0 to wire::kMaxPacketBytes - 1; others are ignored.
  void add(int index, std::uint8_t value, Source source, std::int64_t time);

  /// A position frame was heard where the timetable or its neighbours put it.
  void notePosition(int index);

  /// A frame in this sender's broadcasts was no part of the encoding: lengths are to be distrusted.
  void noteStrayFrame() { strayFrames_ = true; }

  /// Broadcasts were heard out of order: conclusions from their order are to be distrusted.
  void noteDisorder() { disorder_ = true; }

  /// Number of frames heard that are of this encoding beyond doubt.
  unsigned certainFrames() const { return certainFrames_; }

  /// A channel's clock has just said this of a frame.
  void noteTimetable(const CycleClock& clock, CycleClock::Fit fit);

  /// Another run may have begun at this time.
  void noteBreak(std::int64_t time, RunContinuity::Break kind) { continuity_.noteBreak(time, kind); }

  /// The times by which bytes were placed mean nothing: those whose only source is broadcast lengths are to
  /// be seen anew before they count.
  void doubtLengthBytes();

  /// The times by which breaks were noticed mean nothing, but for a silence that the channel's clock has
  /// noticed.
  void excuseBreaks(const CycleClock& clock);

  /// True when there is no doubt that all bytes are of one run.
  bool ofOneRun(RunContinuity::Timetable timetable) const { return continuity_.unbroken(timetable); }

  /// Forgets the bytes whose only source is broadcast lengths.
  void dropLengthBytes();

  /// \param index of a byte, here and below: 0 to wire::kMaxPacketBytes - 1.
  bool known(int index) const { return cells_[static_cast<std::size_t>(index)].known; }
  std::uint8_t byte(int index) const { return bytes_[static_cast<std::size_t>(index)]; }

  /// True when the byte is known well enough to say that it is not this value.
  bool excludes(int index, std::uint8_t value) const;

  int knownCount() const { return knownCount_; }

  /// Grows whenever a byte is learnt, replaced or forgotten.
  unsigned changes() const { return changes_; }

  /// The byte at an index of a packet in the given encoding, as far as this evidence tells it. From the SSID
  /// length to the end of the pass phrase the packets of both encodings are the same.
  std::optional<std::uint8_t> byteFor(Encoding encoding, int index) const;

  /// Fields of the header, once it is known and possible.
  std::optional<PacketFields> fields() const;

  /// Number of bytes the packet has by its own header, 0 while that is unknown or impossible.
  int packetLength() const;

  /// True when the byte is known and may be believed, given that the packet's CRC holds.
  bool firm(int index, RunContinuity::Timetable timetable) const;

  /// A frame beyond the packet's last one was heard.
  bool exceeds(int length) const;

  /// Throws the evidence away: a run with other lengths or other bytes has begun.
  void beginAnotherRun();

  /// True once after the evidence was thrown away because another run had begun.
  bool takeRestart();

 private:
  struct Cell {
    bool known = false;
    bool disputed = false;  // another value was seen since this one
    Source source = Source::kLength;
    std::uint8_t sightings = 0;
    std::int64_t firstSeen = 0;
    std::int64_t lastSeen = 0;
    std::int64_t lastSighting = 0;  // last time that counted as a sighting of its own
  };

  void noteChannelBegin(std::int64_t time);
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
  int highestPair_ = -1;  // index of a multicast frame
  int highestPosition_ = -1;
  int contradictions_ = 0;  // in a row
  unsigned certainFrames_ = 0;
  std::int64_t begin_ = 0;
  RunContinuity continuity_;
};

/// The bytes of a packet as far as anything has told them.
using ToldBytes = std::array<std::optional<std::uint8_t>, wire::kMaxPacketBytes>;

/// Collects what the evidence of an encoding and, for the common part, that of the other one have told.
ToldBytes bytesTold(Encoding encoding, const PacketEvidence& own, const PacketEvidence& other);

}  // namespace zor::receiver
