#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "receiver/analysis/BroadcastMeter.h"
#include "receiver/analysis/MulticastMeter.h"
#include "receiver/analysis/Report.h"

namespace zor::receiver {

/// What a frame's destination says.
enum class Destination : std::uint8_t { broadcast, sync, data, marker, version3Data, otherGroup, host };

Destination classify(const MacAddress& destination);

/// Measures what one sender sends on one leg.
class LegMeter {
 public:
  /// Keeps the first `framesKept` frames.
  explicit LegMeter(std::size_t framesKept) : log_(framesKept) {}
  LegMeter(const LegMeter&) = delete;
  LegMeter& operator=(const LegMeter&) = delete;

  /// Takes a data frame of any destination, with its number in the capture. Returns false when it is the
  /// previous frame once more.
  bool observe(const CapturedFrame& frame, Destination destination, std::uint64_t number);

  /// True when what was heard cannot be anything but smart configuration.
  bool isRun() const;

  LegReport report(Leg leg) const;

 private:
  void observeGroup(const CapturedFrame& frame, Destination destination);
  bool repeatsPrevious(const CapturedFrame& frame);

  FrameLog log_;
  MulticastMeter version5_{{0, FrameRole::multicastSync, FrameRole::multicastData}, log_};
  MulticastMeter version3_{{1, FrameRole::version3Sync, FrameRole::version3Data}, log_};
  BroadcastMeter broadcast_{log_};
  std::uint64_t retries_ = 0;
  bool isProtected_ = false;
  std::int32_t headerBytes_ = 0;
  std::optional<std::int64_t> firstTime_;
  std::int64_t lastTime_ = 0;
  std::optional<std::uint16_t> sequence_;
  std::optional<std::int64_t> lastOfCycle_;  ///< When the last multicast was heard, if it ended a cycle.
  DurationCounts pauses_;                    ///< From there to the next multicast.
};

}  // namespace zor::receiver
