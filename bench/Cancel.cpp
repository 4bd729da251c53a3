// How long a stop takes: from SmartConfigStop until the handles of both senders and the listener are empty.

#include <unistd.h>

#include <chrono>
#include <random>

#include "ZOR/ZorSuite.h"
#include "bench/support/CountedSleepRun.h"
#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLongestPhaseUs = 30'000;  // One interval of the multicast channel.

struct StopTimes {
  std::vector<double> sendersMs;
  std::vector<double> allMs;
};

double passedMs(Clock::time_point since) {
  return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

/// Runs for a random time, so that the stop meets every phase of the waits.
class RandomPhase {
 public:
  void sleep() { usleep(static_cast<useconds_t>(phase_(random_))); }

 private:
  std::mt19937 random_{1};
  std::uniform_int_distribution<int> phase_{0, kLongestPhaseUs};
};

StopTimes measureLibrary(int runs) {
  StopTimes times;
  RandomPhase phase;
  ZorSuite suite;
  for (int run = 0; run < runs; ++run) {
    suite.SmartConfigOnlineListen(kZorAnnouncementPort);
    startSenders(suite);
    phase.sleep();
    const Clock::time_point stop = Clock::now();
    suite.SmartConfigStop();
    waitForSenders();
    times.sendersMs.push_back(passedMs(stop));
    s_threadSmartOnlineListen.waitUntilEmpty();
    times.allMs.push_back(passedMs(stop));
  }
  return times;
}

StopTimes measureBaseline(int runs) {
  StopTimes times;
  RandomPhase phase;
  const RunInputs inputs = sampleInputs();
  for (int run = 0; run < runs; ++run) {
    ReceiveLoop listener(kZorAnnouncementPort);
    CountedSleepRun senders(inputs);
    phase.sleep();
    const Clock::time_point stop = Clock::now();
    senders.cancel();
    listener.cancel();
    while (senders.sendersRunning()) usleep(1000);
    times.sendersMs.push_back(passedMs(stop));
    while (listener.running()) usleep(1000);
    times.allMs.push_back(passedMs(stop));
  }
  return times;
}

Row makeRow(const char* what, const std::vector<double>& times, const std::vector<double>& baseline) {
  return {{"until empty", what},
          {"runs", times.size()},
          {"median ms", median(times)},
          {"p99 ms", percentile(times, 0.99)},
          {"max ms", percentile(times, 1)},
          {"baseline median ms", median(baseline)},
          {"baseline p99 ms", percentile(baseline, 0.99)},
          {"median to baseline", ratio(median(times), median(baseline))},
          {"p99 to baseline", ratio(percentile(times, 0.99), percentile(baseline, 0.99))}};
}

}  // namespace

void runBenchmark(Program& program) {
  int runs = 1000;
  program.options().add_option("--runs", runs, "Number of runs, stopped in random phases");
  program.parse("Time from SmartConfigStop until the workers' handles are empty");
  Program::prepareToSend();

  const StopTimes library = measureLibrary(runs);
  const StopTimes baseline = measureBaseline(runs);
  Table table("cancel",
              "Stop of a version 5 run; baseline: counted 1 ms sleeps, handles polled every 1000 us");
  table.add(makeRow("both senders", library.sendersMs, baseline.sendersMs));
  table.add(makeRow("senders and listener", library.allMs, baseline.allMs));
  program.print(table);
}

}  // namespace zor::bench
