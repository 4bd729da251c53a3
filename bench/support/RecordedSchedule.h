#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ZOR/facade/Worker.h"

namespace zor::bench {

/// One frame of a schedule: when after the block's begin, where to, how long its datagram is.
struct ScheduledFrame {
  std::int64_t ms;
  std::string destination;
  std::int32_t length;
};

/// One block of a channel. With the pacing left alone, a run is this block over and over.
struct RecordedSchedule {
  std::vector<ScheduledFrame> frames;
  std::int64_t periodMs = 0;
};

/// What a version 5 run sends for, as its workers receive it.
RunInputs makeInputs(const std::string& ssid, const std::string& passPhrase,
                     const std::vector<std::uint8_t>& append = {});

/// The library's own schedules under the present pacing tunables.
RecordedSchedule recordMulticast(const RunInputs& inputs, bool mixVersion3 = false);
RecordedSchedule recordBroadcast(const RunInputs& inputs);

}  // namespace zor::bench
