#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/PacketEvidence.h"
#include "receiver/PacketReader.h"
#include "receiver/WireConstants.h"

namespace zor::receiver {

/// What a multicast data frame tells: two packet bytes, and their index by its length and its mark.
struct GroupPair {
  int length = 0;
  bool odd = false;
  std::uint8_t first = 0;
  std::uint8_t second = 0;
  bool operator==(const GroupPair&) const = default;
};

/// Multicast data frames of one sender whose index is not known yet, because no sync frame has shown the
/// length that index 0 has, the base.
class PendingPairs {
 public:
  struct Kept {
    bool used = false;
    GroupPair pair;
    std::int64_t firstSeen = 0;
    std::int64_t lastSeen = 0;
  };

  // Lengths of one run differ by less than this, so each has a place of its own modulo this.
  static constexpr std::size_t kSlots = 64;

  /// Keeps a frame; forgets the others if it cannot be of their run.
  void keep(const GroupPair& pair, std::int64_t time);

  void clear() { *this = PendingPairs(); }

  bool empty() const { return shortest_ == kNone; }
  const std::array<Kept, kSlots>& frames() const { return frames_; }

  /// Length of the shortest frame, the highest base there can be. There must be a frame.
  int shortest() const { return shortest_; }

  /// The lowest base there can be. There must be a frame.
  int lowestBase() const { return longest_ - wire::kMaxPairs + 1; }

  /// The bytes that the frames tell if this is the base; nothing if it cannot be.
  std::optional<ToldBytes> bytesIf(int base) const;

  /// The base, once the frames make a packet whose CRC holds.
  std::optional<int> baseOfWholePacket(Encoding encoding) const;

  /// The base, if enough bytes that other channels have told agree with one, and with no other.
  /// \param likely the base to expect, if there is one: fewer bytes suffice to confirm it, or that the last
  /// frame is where it puts the packet's end. \param packetLength 0 if unknown.
  std::optional<int> baseByBytes(const ToldBytes& told, std::optional<int> likely, int packetLength) const;

 private:
  static constexpr int kNone = -1;

  /// Number of bytes that agree with those told, nothing if any disagrees.
  std::optional<int> agreement(int base, const ToldBytes& told) const;

  std::array<Kept, kSlots> frames_{};
  int shortest_ = kNone;
  int longest_ = kNone;
  int latest_ = kNone;
  bool wrapped_ = false;  // frames of two cycles
};

}  // namespace zor::receiver
