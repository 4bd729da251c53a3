#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "receiver/decoder/PacketEvidence.h"

namespace zor::receiver {

/// Finds the length base of a sender's broadcasts without its sync frames, from bytes that its multicast
/// frames have shown. Under a given base, a value frame and the position frame right after it give a byte and
/// its index, which agree or disagree with a byte already known. A base is believed when enough bytes agree,
/// none disagrees and no other base comes near. A base that is likely anyway, because another channel has the
/// same, needs less.
class BaseMatcher {
 public:
  /// Takes two frames heard in direct succession, as far as their times say: in a burst, frames between them
  /// may have been lost. The pair is ignored unless the first frame is the longer one, as value frames are.
  void addPair(int length, int nextLength);

  /// Returns the base, or nothing while the pairs do not single one out. `likely` is the base to expect, if
  /// there is one: to confirm it takes fewer bytes, or just that the last position is where it puts the
  /// packet's end. `packetLength` is 0 if unknown.
  std::optional<int> match(const KnownBytes& known, std::optional<int> likely, int packetLength) const;

  /// True when enough bytes agree with this base and none disagrees.
  bool confirms(int base, const KnownBytes& known) const;

  bool empty() const { return count_ == 0; }
  void reset() { count_ = next_ = 0; }

 private:
  struct Pair {
    int value;
    int position;
  };

  static constexpr std::size_t kMaxPairs = 64;

  /// How many pairs agree with the known bytes under a base, and how many do not.
  struct Verdict {
    int agreed = 0;
    int disagreed = 0;
    int lastIndex = -1;    ///< Highest position.
    bool possible = true;  ///< Every length means something under this base.
  };

  /// True when a base that is likely anyway is confirmed.
  bool isLikelyBase(int base, const KnownBytes& known, int packetLength) const;
  /// True when another base fits as well.
  bool hasRival(int base, const Verdict& verdict, const KnownBytes& known) const;
  Verdict judge(int base, const KnownBytes& known) const;

  std::array<Pair, kMaxPairs> pairs_{};
  std::size_t count_ = 0;
  std::size_t next_ = 0;  ///< Where the next pair goes; the oldest once all are used.
};

}  // namespace zor::receiver
