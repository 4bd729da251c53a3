#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "receiver/analysis/ByteMap.h"
#include "receiver/analysis/CycleMeter.h"
#include "receiver/analysis/Report.h"

namespace zor::receiver {

/// Measures the multicast frames of one encoding. The number of a frame is in its length, so what is lost and
/// how fast frames come is known without a sync frame; which bytes they carry is known with one.
class MulticastMeter {
 public:
  /// What sets the multicasts of an encoding apart.
  struct Form {
    int firstFrameOffset;  ///< Length of data frame 0 less that of a sync frame.
    FrameRole sync, data;
  };

  /// Explains frames in `log`, to which they were added before; it outlives this.
  MulticastMeter(const Form& form, FrameLog& log) : form_(form), log_(log) {}

  void observeSync(std::int32_t length, std::int64_t time);
  void observeData(std::int32_t length, std::uint8_t first, std::uint8_t second, std::int64_t time);

  /// True when this length is the longest data frame's so far, which ends a cycle.
  bool isLast(std::int32_t length) const { return cycle_.isLast(length); }

  const ByteMap& bytes() const { return bytes_; }
  std::uint64_t frames() const { return frames_; }

  /// All but the pause.
  ChannelReport report() const;

 private:
  struct Pair {
    std::int32_t length;
    std::uint8_t first, second;
    std::int64_t time;
    std::size_t place;  ///< In the log.
  };
  static constexpr std::size_t kMaxPending = 128;

  void place(const Pair& pair);

  Form form_;
  FrameLog& log_;
  std::uint64_t frames_ = 0, syncs_ = 0;
  std::optional<std::int32_t> syncLength_;
  std::optional<LengthChange> change_;
  std::vector<Pair> pending_;  ///< Before the first sync frame.
  ByteMap bytes_;
  CycleMeter cycle_;
  GapCounts gaps_;
};

}  // namespace zor::receiver
