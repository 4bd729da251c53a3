#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "receiver/CycleClock.h"
#include "receiver/PacketEvidence.h"
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
  /// \param other evidence of the other encoding, which helps to find the length base.
  /// \return true when the frame belongs to this encoding.
  bool observe(const GroupOctets& group, int length, std::int64_t time, PacketEvidence& evidence,
               const PacketEvidence& other);

  /// Another run has begun: forgets its timetable, keeps the length base.
  void restart();

  /// Length of a sync frame, once known.
  std::optional<int> syncLength() const;

  /// True once any frame of this encoding was heard.
  bool heard() const { return heard_; }

  const CycleClock& clock() const { return clock_; }

 private:
  struct Frame {
    int length = 0;
    bool odd = false;
    std::uint8_t first = 0;
    std::uint8_t second = 0;
    bool operator==(const Frame&) const = default;
  };

  /// A frame whose index is not known yet.
  struct Pending {
    bool used = false;
    Frame frame;
    std::int64_t firstSeen = 0;
    std::int64_t lastSeen = 0;
  };

  // Lengths of one run differ by less than this, so each has a place of its own modulo this.
  static constexpr int kPendingSlots = 64;

  void observeSync(int length, PacketEvidence& evidence);
  void observeData(const Frame& frame, std::int64_t time, PacketEvidence& evidence,
                   const PacketEvidence& other);
  void followTimetable(int length, std::int64_t time, PacketEvidence& evidence);
  void addPair(const Frame& frame, std::int64_t time, PacketEvidence& evidence) const;
  void keepPending(const Frame& frame, std::int64_t time);
  void clearPending();
  void releasePending(PacketEvidence& evidence);
  std::optional<int> baseOfWholePacket() const;
  std::optional<int> baseByEvidence(const PacketEvidence& evidence, const PacketEvidence& other) const;
  int agreement(int base, const ToldBytes& told) const;

  const MulticastFormat* format_;
  CycleClock clock_;
  std::optional<int> base_;  // length of data frame 0
  bool heard_ = false;
  std::array<Pending, kPendingSlots> pending_{};
  int lastPendingLength_ = 0;
  bool wrapped_ = false;  // pending frames of two cycles
};

}  // namespace zor::receiver
