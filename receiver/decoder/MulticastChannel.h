#pragma once

#include <cstdint>
#include <optional>

#include "receiver/decoder/CycleClock.h"
#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PendingPairs.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// A multicast frame of an encoding.
struct GroupFrame {
  GroupOctets group{};
  int length = 0;
  std::int64_t time = 0;
  /// Source::length when its length may be that of another copy.
  Source source = Source::group;
};

/// What the multicast frames of an encoding look like.
struct MulticastFormat {
  Encoding encoding;
  GroupOctets syncGroup;     ///< Group of the frames that mark a cycle's start.
  std::uint8_t evenMark;     ///< First of these octets in data frames 0, 2, 4 and so on.
  std::uint8_t oddMark;      ///< The same in data frames 1, 3, 5 and so on.
  int firstFrameOffset;      ///< Length of data frame 0 less that of a sync frame.
  std::int64_t defaultPace;  ///< Microseconds from one data frame to the next, unless the sender is
                             ///< configured otherwise.
};

extern const MulticastFormat kVersion5Multicast;
extern const MulticastFormat kVersion3Multicast;

/// Reads the multicast frames of one encoding from one sender. Each carries two packet bytes in the last
/// octets of its group and its index in its length, counted from the length of the sync frames, the base.
/// Frames heard before the first sync frame are kept until the base is known. It may also follow from the
/// frames themselves, once they make a packet, or from bytes that another channel has shown.
class MulticastChannel {
 public:
  explicit MulticastChannel(const MulticastFormat& format);

  /// True when frames to this group belong to the encoding.
  static bool carries(const MulticastFormat& format, const GroupOctets& group);

  /// Takes a frame of this encoding.
  void observe(const GroupFrame& frame, PacketEvidence& evidence);

  /// Of a frame that was sent with its length or with one that is `step` shorter: gives it the shorter length
  /// of both copies, if what is known leaves only one. Its time helps unless copies are held; where they are,
  /// only bytes that were sighted twice count as known. Returns false if both lengths are possible, or none.
  bool findLength(GroupFrame& frame, int step, bool areHeld, const PacketEvidence& evidence);

  /// Finds the length base from bytes that other channels have shown, unless it is known already.
  /// `likelySyncLength` is the length of a sync frame to expect, if there is a reason to.
  void findBase(PacketEvidence& evidence, std::optional<int> likelySyncLength);

  /// Another channel has shown that times mean nothing.
  void noteTimeless();

  /// Frames that wait for a base.
  const PendingPairs& pending() const { return pending_; }

  /// Takes the base from the length of a sync frame that another channel has found, unless it is known
  /// already.
  void adoptSyncLength(int syncLength, PacketEvidence& evidence);

  /// Another run has begun: forgets the timetable, keeps the length base.
  void restart();

  /// Length of a sync frame, once known.
  std::optional<int> syncLength() const;

  /// True while sync frames disagree about the base: what was read with it may be wrong.
  bool contested() const { return syncsToAgree_ > 0; }

  /// True once any frame of this encoding was heard, since restart() if that was called.
  bool heard() const { return heard_; }

  const CycleClock& clock() const { return clock_; }

  /// When the present cycle sends data frame `index`. A sync frame and a data frame must have been heard.
  std::int64_t timeOf(int index) const { return clock_.timeOf(*base_ + index); }

 private:
  /// The second byte of the last data frame of version 3, which may be padding of any value.
  struct LastByte {
    std::int16_t index = -1;
    std::uint8_t value = 0;
    bool waits = false;  ///< Until the lengths or a later frame show that it is not padding.
    Sighting sighting;
  };

  void observeSync(int length, PacketEvidence& evidence);
  void observeData(const GroupFrame& frame, PacketEvidence& evidence);
  bool showToClock(const GroupFrame& frame, PacketEvidence& evidence);
  void settle(int length, PacketEvidence& evidence);
  void addPair(const GroupPair& pair, const Sighting& sighting, PacketEvidence& evidence);
  void addByte(int index, std::uint8_t value, const Sighting& sighting, PacketEvidence& evidence) const;
  bool findSyncLength(GroupFrame& frame, int step);
  bool isPossible(const GroupOctets& group, int length, bool areHeld, const PacketEvidence& evidence) const;
  void addSecondByte(const LastByte& byte, PacketEvidence& evidence);
  void beginWithBase(int base, PacketEvidence& evidence);

  const MulticastFormat* format_;
  CycleClock clock_;
  std::optional<int> base_;  ///< Length of data frame 0.
  bool heard_ = false;
  std::uint8_t syncsToAgree_ = 0;  ///< Before the base is believed again.
  std::int16_t singleSync_ = -1;   ///< Length of a sync frame that may be either copy; negative for none.
  LastByte lastByte_;
  PendingPairs pending_;
};

}  // namespace zor::receiver
