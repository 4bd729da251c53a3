#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ZOR/smartconfig/SenderInputs.h"

namespace zor::simulator {

/// One frame of a schedule.
struct ScheduledFrame {
  std::int64_t timeMs;      ///< Since the start of the block.
  std::string destination;  ///< Dotted-quad address or group.
  std::int32_t length;      ///< Of the datagram, bytes.
};

/// One block of a channel. While the pacing stays the same, a run repeats this block.
struct RecordedSchedule {
  std::vector<ScheduledFrame> frames;
  std::int64_t periodMs = 0;  ///< From the start of one block to the start of the next.
};

/// The library's own schedules at the present pacing tunables.
RecordedSchedule recordMulticast(const SenderInputs& inputs, bool mixVersion3 = false);
RecordedSchedule recordBroadcast(const SenderInputs& inputs);

/// Version 3, which has no tunables: one cycle, to the start of the next.
RecordedSchedule recordVersion3(const SenderInputs& inputs);

}  // namespace zor::simulator
