// Lists the frames of the first second of a version 5 run, for a picture of how the two channels encode.

#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
#include "simulator/RecordedSchedule.h"

namespace zor::bench {
namespace {

constexpr std::int64_t kShownMs = 1000;

void addRows(Table& table, const char* channel, const simulator::RecordedSchedule& schedule) {
  for (const simulator::ScheduledFrame& frame : schedule.frames) {
    if (frame.timeMs > kShownMs) break;
    table.add({{"channel", channel},
               {"ms", frame.timeMs},
               {"destination", frame.destination},
               {"bytes", frame.length}});
  }
}

}  // namespace

void runBenchmark(Program& program) {
  program.parse("Frames of the first second of a version 5 run, default pacing");
  const SenderInputs inputs = sampleInputs();
  Table table("timeline", "Frames of the first second of a version 5 run");
  addRows(table, "multicast", simulator::recordMulticast(inputs));
  addRows(table, "broadcast", simulator::recordBroadcast(inputs));
  program.print(table);
}

}  // namespace zor::bench
