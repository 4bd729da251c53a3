#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {

/// What a multicast data frame carries: two packet bytes, and their index in its length and its mark.
struct GroupPair {
  int length = 0;
  bool odd = false;
  std::uint8_t first = 0;
  std::uint8_t second = 0;
};

/// Multicast data frames of one sender whose index is not known yet, because no sync frame has shown the
/// base, which is the length of index 0. Where two of them look like copies of one frame with another
/// overhead, lengths do not tell indices: nothing can be the base until clear().
class PendingPairs {
 public:
  /// Keeps a frame. Forgets the others if it cannot be of their run.
  void keep(const GroupPair& pair, Moment seen);

  void clear() { *this = PendingPairs(); }

  bool empty() const { return shortest_ == kNone; }

  /// Calls `take(pair, seen)` for each frame.
  template <class Take>
  void forEach(const Take& take) const {
    for (int place = 0; place < wire::kMaxPairs; ++place) {
      const Kept& kept = frames_[static_cast<std::size_t>(place)];
      if (kept.used) take(GroupPair{lengthAt(place), kept.odd, kept.first, kept.second}, kept.seen);
    }
  }

  /// Length of the shortest frame, which is the highest possible base. There must be a frame.
  int shortest() const { return shortest_; }

  /// The lowest possible base. There must be a frame.
  int lowestBase() const { return longest_ - wire::kMaxPairs + 1; }

  /// True when this can be the base.
  bool mayBe(int base) const;

  /// The byte at an index of the packet, if a frame carries it and this is the base.
  std::optional<std::uint8_t> byteIf(int base, int index) const;

  /// The base, once the frames make a packet whose CRC holds.
  std::optional<int> baseOfWholePacket(Encoding encoding) const;

  /// The base, if enough bytes already known agree with it and with no other base. `likely` is the base to
  /// expect, if there is one: to confirm it takes fewer bytes, or just that the last frame is where it puts
  /// the packet's end, and no other base is taken while nothing contradicts it. `packetLength` is 0 if
  /// unknown.
  std::optional<int> baseByBytes(Encoding encoding, const PacketEvidence& evidence, std::optional<int> likely,
                                 int packetLength) const;

 private:
  struct Kept {
    Moment seen = 0;
    std::uint8_t first = 0;
    std::uint8_t second = 0;
    bool odd = false;
    bool used = false;

    bool carries(const GroupPair& pair) const {
      return odd == pair.odd && first == pair.first && second == pair.second;
    }
  };

  static constexpr std::int16_t kNone = -1;

  /// Lengths of one run differ by less than this, so each has a place of its own modulo this.
  static std::size_t placeOf(int length) { return static_cast<std::size_t>(length % wire::kMaxPairs); }
  int lengthAt(int place) const {
    return shortest_ + (place - shortest_ % wire::kMaxPairs + wire::kMaxPairs) % wire::kMaxPairs;
  }

  bool isCopyOfLatest(const GroupPair& pair, Moment seen) const;

  /// Number of bytes that agree with the known ones, -1 if any disagrees or this cannot be the base.
  int agreement(int base, Encoding encoding, const PacketEvidence& evidence) const;

  std::array<Kept, wire::kMaxPairs> frames_{};
  std::int16_t shortest_ = kNone;
  std::int16_t longest_ = kNone;
  std::int16_t latest_ = kNone;
  bool wrapped_ = false;   ///< The frames come from more than one cycle.
  bool copied_ = false;    ///< Two may be copies of one frame: lengths do not tell indices.
  bool mayBeEven_ = true;  ///< By every frame's mark, the base can be an even length.
  bool mayBeOdd_ = true;
};

}  // namespace zor::receiver
