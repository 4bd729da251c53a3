// Measures how closely the frames of a version 5 run follow their schedule.
//
// The library's workers send through one end of a veth pair; the kernel stamps what arrives at the other end.

#include <cmath>
#include <iostream>

#include "ZOR/ZorSuite.h"
#include "bench/support/FrameCapture.h"
#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
#include "bench/support/SleepingRun.h"
#include "bench/support/Statistics.h"
#include "simulator/RecordedSchedule.h"

namespace zor::bench {
namespace {

using simulator::RecordedSchedule;
using simulator::ScheduledFrame;

struct Spacing {
  std::vector<double> gapErrorsMs;
  double driftPercent = 0;
};

/// Returns the scheduled time from frame `index` of an endless run to the next one, milliseconds.
std::int64_t scheduledGap(const RecordedSchedule& schedule, std::size_t index) {
  const std::size_t here = index % schedule.frames.size();
  const bool last = here + 1 == schedule.frames.size();
  const std::int64_t next =
      last ? schedule.periodMs + schedule.frames.front().timeMs : schedule.frames[here + 1].timeMs;
  return next - schedule.frames[here].timeMs;
}

Spacing compare(const RecordedSchedule& schedule, const std::vector<CapturedFrame>& frames) {
  Spacing spacing;
  std::int64_t scheduledMs = 0;
  for (std::size_t i = 0; i + 1 < frames.size(); ++i) {
    const ScheduledFrame& expected = schedule.frames[i % schedule.frames.size()];
    if (frames[i].length != expected.length || frames[i].destination != expected.destination) {
      std::cerr << "frame " << i << " differs from the schedule: the capture lost frames\n";
      std::exit(1);
    }
    const std::int64_t gapMs = scheduledGap(schedule, i);
    const double passedMs = static_cast<double>(frames[i + 1].timeNs - frames[i].timeNs) / 1e6;
    spacing.gapErrorsMs.push_back(std::fabs(passedMs - static_cast<double>(gapMs)));
    scheduledMs += gapMs;
  }
  if (scheduledMs == 0) return spacing;
  const double spanMs = static_cast<double>(frames.back().timeNs - frames.front().timeNs) / 1e6;
  spacing.driftPercent = 100 * (spanMs / static_cast<double>(scheduledMs) - 1);
  return spacing;
}

std::vector<Spacing> judge(const FrameCapture& capture, const SenderInputs& inputs) {
  return {compare(simulator::recordMulticast(inputs), capture.frames(true)),
          compare(simulator::recordBroadcast(inputs), capture.frames(false))};
}

std::vector<Spacing> measureLibrary(const SenderInputs& inputs, double seconds) {
  FrameCapture capture("zor1");
  ZorSuite suite;
  startSenders(suite);
  capture.drainFor(seconds);
  suite.SmartConfigStop();
  waitForSenders();
  return judge(capture, inputs);
}

std::vector<Spacing> measureBaseline(const SenderInputs& inputs, Sleeps sleeps, double seconds) {
  FrameCapture capture("zor1");
  {
    const SleepingRun run(inputs, sleeps);
    capture.drainFor(seconds);
  }
  return judge(capture, inputs);
}

Row makeRow(const char* channel, const char* waits, const Spacing& spacing, const Spacing& baseline) {
  const std::vector<double>& errors = spacing.gapErrorsMs;
  return {{"channel", channel},
          {"waits", waits},
          {"gaps", errors.size()},
          {"median error ms", median(errors)},
          {"p99 error ms", percentile(errors, 0.99)},
          {"max error ms", percentile(errors, 1)},
          {"drift %", spacing.driftPercent},
          {"median to baseline", ratio(median(errors), median(baseline.gapErrorsMs))},
          {"drift to baseline", ratio(std::fabs(spacing.driftPercent), std::fabs(baseline.driftPercent))}};
}

}  // namespace

void runBenchmark(Program& program) {
  double seconds = 10;
  program.options().add_option("--seconds", seconds, "Length of each of the three runs");
  program.parse("Spacing of the frames of a version 5 run, compared with its schedule");
  Program::prepareToSend();

  const SenderInputs inputs = sampleInputs();
  const std::vector<Spacing> library = measureLibrary(inputs, seconds);
  const std::vector<Spacing> counted = measureBaseline(inputs, Sleeps::counted, seconds);
  const std::vector<Spacing> single = measureBaseline(inputs, Sleeps::oneForEachFrame, seconds);
  Table table(
      "spacing",
      "Errors of the gaps between frames, default pacing, against the schedule; baseline: one sleep a frame");
  for (std::size_t channel = 0; channel < library.size(); ++channel) {
    const char* const name = channel == 0 ? "multicast" : "broadcast";
    table.add(makeRow(name, "library", library[channel], single[channel]));
    table.add(makeRow(name, "one sleep a frame", single[channel], single[channel]));
    table.add(makeRow(name, "counted 1 ms sleeps", counted[channel], single[channel]));
  }
  program.print(table);
}

}  // namespace zor::bench
