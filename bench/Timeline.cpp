// The frames of the first second of a version 5 run, for a picture of how the two channels encode.

#include "bench/simulator/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/RecordedSchedule.h"

namespace zor::bench {
namespace {

constexpr std::int64_t kShownMs = 1000;

void addRows(Table& table, const char* channel, const RecordedSchedule& schedule) {
  for (const ScheduledFrame& frame : schedule.frames) {
    if (frame.ms > kShownMs) break;
    table.add({{"channel", channel},
               {"ms", frame.ms},
               {"destination", frame.destination},
               {"bytes", frame.length}});
  }
}

}  // namespace

void runBenchmark(Program& program) {
  program.parse("Frames of the first second of a version 5 run, default pacing");
  const Secret& secret = secrets().front().secret;
  const RunInputs inputs = makeInputs(secret.ssid, secret.passPhrase);
  Table table("timeline", "Frames of a version 5 run");
  addRows(table, "multicast", recordMulticast(inputs));
  addRows(table, "broadcast", recordBroadcast(inputs));
  program.print(table);
}

}  // namespace zor::bench
