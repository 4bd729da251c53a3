#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "receiver/decoder/CycleClock.h"
#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PendingPairs.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// The last three octets of an IPv4 group address.
using GroupOctets = std::array<std::uint8_t, 3>;

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

  /// Takes a frame. Returns true when it belongs to this encoding.
  bool observe(const GroupOctets& group, int length, std::int64_t time, PacketEvidence& evidence);

  /// Finds the length base from bytes that other channels have shown, unless it is known already. `other` is
  /// the evidence of the other encoding, `likelySyncLength` the length of a sync frame to expect, if there is
  /// a reason to, and `packetLength` that of this encoding's packet, 0 if unknown.
  void findBase(PacketEvidence& evidence, const PacketEvidence& other, std::optional<int> likelySyncLength,
                int packetLength);

  /// Another channel has shown that times mean nothing.
  void noteTimeless(PacketEvidence& evidence);

  /// Frames that wait for a base.
  const PendingPairs& pending() const { return pending_; }

  /// Takes the base from the length of a sync frame that another channel has found, unless it is known
  /// already.
  void adoptSyncLength(int syncLength, PacketEvidence& evidence);

  /// Another run has started: forgets the timetable, keeps the length base.
  void restart();

  /// Length of a sync frame, once known.
  std::optional<int> syncLength() const;

  /// True once any frame of this encoding was heard.
  bool heard() const { return heard_; }

  const CycleClock& clock() const { return clock_; }

 private:
  void observeSync(int length, PacketEvidence& evidence);
  void observeData(const GroupPair& pair, std::int64_t time, PacketEvidence& evidence);
  void addPair(const GroupPair& pair, std::int64_t time, PacketEvidence& evidence) const;
  void beginWithBase(int base, PacketEvidence& evidence);

  const MulticastFormat* format_;
  CycleClock clock_;
  std::optional<int> base_;  ///< Length of data frame 0.
  bool heard_ = false;
  PendingPairs pending_;
};

}  // namespace zor::receiver
