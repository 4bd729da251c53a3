#pragma once

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
  /// Takes a data frame of any destination. Returns false when it is the previous frame once more.
  bool observe(const CapturedFrame& frame, Destination destination);

  /// True when what was heard cannot be anything but smart configuration.
  bool isRun() const;

  LegReport report(Leg leg) const;

 private:
  void observeGroup(const CapturedFrame& frame, Destination destination);
  bool repeatsPrevious(const CapturedFrame& frame);

  MulticastMeter version5_{0};
  MulticastMeter version3_{1};
  BroadcastMeter broadcast_;
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
