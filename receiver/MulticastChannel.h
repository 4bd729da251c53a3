#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "receiver/CycleClock.h"
#include "receiver/PacketEvidence.h"
#include "receiver/PendingPairs.h"
#include "receiver/WireConstants.h"

namespace zor::receiver {

/// The second to the last octet of a group address.
using GroupOctets = std::array<std::uint8_t, 3>;

/// What the multicast frames of an encoding look like.
struct MulticastFormat {
  Encoding encoding;
  GroupOctets syncGroup;  ///< Group of the frames that mark a cycle's start.
  std::uint8_t evenMark;  ///< First of the group octets of data frames 0, 2, 4 and so on.
  std::uint8_t oddMark;
  int firstFrameOffset;      ///< Length of data frame 0 less that of a sync frame.
  std::int64_t defaultPace;  ///< Microseconds from one data frame to the next unless told otherwise.
};

extern const MulticastFormat kVersion5Multicast;
extern const MulticastFormat kVersion3Multicast;

/// Reads the multicast frames of one encoding from one sender. Each carries two packet bytes in the last
/// octets of its group and its index in its length, counted from the length of the sync frames. Frames heard
/// before the first sync frame are kept until the base is known; it may also follow from the frames
/// themselves, once they make a packet, or from bytes that another channel has told.
class MulticastChannel {
 public:
  explicit MulticastChannel(const MulticastFormat& format);

  /// Takes a frame.
  /// \return true when the frame belongs to this encoding.
  bool observe(const GroupOctets& group, int length, std::int64_t time, PacketEvidence& evidence);

  /// Finds the length base by bytes that other channels have told, as long as it is not known.
  /// \param other evidence of the other encoding.
  /// \param likelySyncLength length of a sync frame to expect, if there is a reason to.
  /// \param packetLength length of this encoding's packet, 0 if unknown.
  void findBase(PacketEvidence& evidence, const PacketEvidence& other, std::optional<int> likelySyncLength,
                int packetLength);

  /// Times mean nothing, as another channel has shown.
  void noteTimeless(PacketEvidence& evidence);

  /// Frames that wait for a base.
  const PendingPairs& pending() const { return pending_; }

  /// Takes a base that the bytes of another channel have shown, as long as none is known.
  void adoptSyncLength(int syncLength, PacketEvidence& evidence);

  /// Another run has begun: forgets its timetable, keeps the length base.
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
  std::optional<int> base_;  // length of data frame 0
  bool heard_ = false;
  PendingPairs pending_;
};

}  // namespace zor::receiver
