#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PacketReader.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// What a multicast data frame carries: two packet bytes, and their index in its length and its mark.
struct GroupPair {
  int length = 0;
  bool odd = false;
  std::uint8_t first = 0;
  std::uint8_t second = 0;
  bool operator==(const GroupPair&) const = default;
};

/// Multicast data frames of one sender whose index is not known yet, because no sync frame has shown the
/// base, which is the length of index 0.
class PendingPairs {
 public:
  struct Kept {
    bool used = false;
    GroupPair pair;
    std::int64_t firstSeen = 0;
    std::int64_t lastSeen = 0;
  };

  /// Lengths of one run differ by less than this, so each has a slot of its own modulo this.
  static constexpr std::size_t kSlots = 64;

  /// Keeps a frame. Forgets the others if it cannot be of their run.
  void keep(const GroupPair& pair, std::int64_t time);

  void clear() { *this = PendingPairs(); }

  bool empty() const { return shortest_ == kNone; }
  const std::array<Kept, kSlots>& frames() const { return frames_; }

  /// Length of the shortest frame, which is the highest possible base. There must be a frame.
  int shortest() const { return shortest_; }

  /// The lowest possible base. There must be a frame.
  int lowestBase() const { return longest_ - wire::kMaxPairs + 1; }

  /// The bytes that the frames carry if this is the base; nothing if it cannot be the base.
  std::optional<KnownBytes> bytesIf(int base) const;

  /// The base, once the frames make a packet whose CRC holds.
  std::optional<int> baseOfWholePacket(Encoding encoding) const;

  /// The base, if enough bytes that other channels have shown agree with it and with no other base. `likely`
  /// is the base to expect, if there is one: to confirm it takes fewer bytes, or just that the last frame is
  /// where it puts the packet's end. `packetLength` is 0 if unknown.
  std::optional<int> baseByBytes(const KnownBytes& known, std::optional<int> likely, int packetLength) const;

 private:
  static constexpr int kNone = -1;

  /// Number of bytes that agree with the known ones; nothing if any disagrees.
  std::optional<int> agreement(int base, const KnownBytes& known) const;

  std::array<Kept, kSlots> frames_{};
  int shortest_ = kNone;
  int longest_ = kNone;
  int latest_ = kNone;
  bool wrapped_ = false;  ///< The frames come from more than one cycle.
};

}  // namespace zor::receiver
