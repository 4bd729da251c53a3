#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/decoder/PacketEvidence.h"
#include "receiver/decoder/PendingPairs.h"

namespace zor::receiver {

/// Finds the length base of a sender's broadcasts without its sync frames, from bytes that its multicast
/// frames have shown. Under a given base, a value frame and the position frame right after it give a byte and
/// its index, which agree or disagree with a byte already known. A base is believed when enough bytes agree,
/// none disagrees and no other base comes near. A base that is likely anyway, because another channel has the
/// same, needs less.
class BaseMatcher {
 public:
  /// Takes two frames heard in direct succession, as far as their times say: in a burst, frames between them
  /// may have been lost. They are ignored unless the first is the longer one, as value frames are.
  void add(int length, int nextLength);

  /// Returns the base, or nothing while the frames do not single one out. `likely` is the base to expect, if
  /// there is one: to confirm it takes fewer bytes, or just that the last position is where it puts the
  /// packet's end.
  std::optional<int> match(const PacketEvidence& evidence, std::optional<int> likely) const;

  /// Finds the base that these frames and multicast frames without a base have in common. Returns it if
  /// enough bytes agree, none disagrees and no other base is possible.
  std::optional<int> commonBase(const PendingPairs& multicast) const;

  bool empty() const { return count_ == 0; }
  void reset() { count_ = next_ = 0; }

 private:
  struct Succession {
    std::int16_t value;
    std::int16_t position;
  };

  static constexpr std::size_t kMaxSuccessions = 40;

  /// How many bytes agree with the known ones under a base, and how many do not.
  struct Verdict {
    int agreed = 0;
    int disagreed = 0;
    int lastIndex = -1;    ///< Highest position.
    bool possible = true;  ///< Every length means something under this base.
  };

  /// True when a base that is likely anyway is confirmed.
  bool isLikelyBase(int base, const PacketEvidence& evidence) const;

  /// `byteAt` returns what is known of the byte at an index.
  template <class ByteAt>
  Verdict judge(int base, const ByteAt& byteAt) const;

  std::array<Succession, kMaxSuccessions> successions_{};
  std::size_t count_ = 0;
  std::size_t next_ = 0;  ///< Where the next one goes; the oldest once all are used.
};

}  // namespace zor::receiver
