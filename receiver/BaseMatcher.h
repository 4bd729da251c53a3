#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "receiver/PacketEvidence.h"

namespace zor::receiver {

/// Finds the length base of a sender's broadcasts without its sync frames, from bytes that its multicast
/// frames have told: the lengths of a value frame and of the position frame right behind it are put where the
/// bytes agree. A base is believed when enough bytes agree, none disagrees, and no other base comes near. Of
/// a base that is likely anyway, the same as on another channel, less is asked.
class BaseMatcher {
 public:
  /// Takes two frames heard in direct succession, which is all that times tell: in a burst, frames between
  /// them may have been lost. Only a value frame is longer than the frame behind it.
  void addPair(int length, int nextLength);

  /// \param likely the base to expect, if there is one: fewer bytes suffice to confirm it, or that the last
  /// position is where it puts the packet's end.
  /// \param packetLength 0 if unknown.
  std::optional<int> match(const ToldBytes& told, std::optional<int> likely, int packetLength) const;

  /// True when enough bytes agree with this base and none disagrees.
  bool confirms(int base, const ToldBytes& told) const;

  bool empty() const { return count_ == 0; }
  void reset() { count_ = next_ = 0; }

 private:
  struct Pair {
    int value;
    int position;
  };

  static constexpr std::size_t kMostPairs = 64;

  /// How many pairs agree with the bytes told, and how many do not.
  struct Verdict {
    int agreed = 0;
    int disagreed = 0;
    int lastIndex = -1;    ///< Highest position.
    bool possible = true;  ///< No length is one that the base leaves no meaning.
  };

  /// True when a base that is likely anyway is confirmed.
  bool isLikelyBase(int base, const ToldBytes& told, int packetLength) const;
  /// True when another base fits as well.
  bool hasRival(int base, const Verdict& verdict, const ToldBytes& told) const;
  Verdict judge(int base, const ToldBytes& told) const;

  std::array<Pair, kMostPairs> pairs_{};
  std::size_t count_ = 0;
  std::size_t next_ = 0;  // the oldest, once all are used
};

}  // namespace zor::receiver
