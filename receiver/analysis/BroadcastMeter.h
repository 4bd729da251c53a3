#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <vector>

#include "receiver/analysis/ByteMap.h"
#include "receiver/analysis/CycleMeter.h"
#include "receiver/analysis/Report.h"

namespace zor::receiver {

/// Measures the broadcasts of one sender. Only sync frames show what the lengths mean; until then the latest
/// frames are kept. A byte counts as heard when its position came right after its value.
class BroadcastMeter {
 public:
  /// Explains frames in `log`, to which they were added before; it outlives this.
  explicit BroadcastMeter(FrameLog& log) : log_(log) {}

  void observe(std::int32_t length, std::int64_t time);

  const ByteMap& bytes() const { return bytes_; }
  std::uint64_t frames() const { return frames_; }

  /// True when the broadcasts are a run's: sync frames show it, or their number, rate and lengths.
  bool isRun() const;

  ChannelReport report() const;

 private:
  struct Frame {
    std::int32_t length = -1;
    std::int64_t time = 0;
    std::size_t place = 0;  ///< In the log.
  };
  static constexpr std::size_t kMaxPending = 256;

  void note(const Frame& frame);
  std::optional<std::int32_t> shownSyncLength(const Frame& frame) const;
  void setSyncLength(std::int32_t length, std::int64_t time);
  void measure(const Frame& frame);
  void measureValue(const Frame& frame);
  void measureSync(int offset, const Frame& frame);
  void measurePosition(int index, const Frame& frame);

  FrameLog& log_;
  std::uint64_t frames_ = 0, syncs_ = 0, values_ = 0, strays_ = 0;
  std::int32_t shortest_ = 0, longest_ = 0;
  std::int64_t firstTime_ = 0;
  std::bitset<512> lengths_;  ///< The lengths heard, modulo its size.
  std::optional<std::int32_t> syncLength_;
  std::optional<LengthChange> change_;
  std::vector<Frame> pending_;
  Frame previous_;
  std::optional<Frame> value_;         ///< The last frame, when it was a value.
  std::optional<Frame> lastPosition_;  ///< Since the last sync, the latest.
  ByteMap bytes_;
  CycleMeter cycle_;
  DurationCounts pauses_;
  GapCounts gaps_;
};

}  // namespace zor::receiver
