// Measures how long a stop takes, from SmartConfigStop until the handles of the workers are empty, and how
// long a start takes that replaces a worker.

#include <unistd.h>

#include <chrono>
#include <random>

#include "ZOR/ZorSuite.h"
#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
#include "bench/support/SleepingRun.h"
#include "bench/support/Statistics.h"

namespace zor::bench {

using Clock = std::chrono::steady_clock;

namespace {

constexpr int kMaxPhaseUs = 30'000;  // One interval of the multicast channel.

struct StopTimes {
  std::vector<double> sendersMs;
  std::vector<double> allMs;
};

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Lets a run last for a random time, so that stops fall into every phase of its waits.
class RandomPhase {
 public:
  void sleep() { usleep(static_cast<useconds_t>(phase_(random_))); }

 private:
  std::mt19937 random_{1};
  std::uniform_int_distribution<int> phase_{0, kMaxPhaseUs};
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
    times.sendersMs.push_back(millisecondsSince(stop));
    s_threadSmartOnlineListen.waitUntilEmpty();
    times.allMs.push_back(millisecondsSince(stop));
  }
  return times;
}

/// Times a start that takes the place of a worker of its kind, which has run for a random time.
template <class Start>
std::vector<double> measureReplacement(int runs, Start start) {
  std::vector<double> times;
  RandomPhase phase;
  start();
  for (int run = 0; run < runs; ++run) {
    phase.sleep();
    const Clock::time_point before = Clock::now();
    start();
    times.push_back(millisecondsSince(before));
  }
  ZorSuite().SmartConfigStop();
  s_threadDeviceSearch.cancel();
  for (ZorWorkerHandle* handle :
       {&s_threadSmartConfigMc, &s_threadSmartConfigBc, &s_threadSmartOnlineListen, &s_threadDeviceSearch}) {
    handle->waitUntilEmpty();
  }
  return times;
}

StopTimes measureBaseline(int runs) {
  StopTimes times;
  RandomPhase phase;
  const SenderInputs inputs = sampleInputs();
  for (int run = 0; run < runs; ++run) {
    ReceiveLoop listener(kZorAnnouncementPort);
    SleepingRun senders(inputs, Sleeps::counted);
    phase.sleep();
    const Clock::time_point stop = Clock::now();
    senders.cancel();
    listener.cancel();
    while (senders.sendersRunning()) usleep(1000);
    times.sendersMs.push_back(millisecondsSince(stop));
    while (listener.running()) usleep(1000);
    times.allMs.push_back(millisecondsSince(stop));
  }
  return times;
}

Row makeRow(const char* workers, const std::vector<double>& times, const std::vector<double>& baseline) {
  return {{"workers", workers},
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
  program.options().add_option("--runs", runs, "Number of runs, each stopped after a random time");
  program.parse("Time from SmartConfigStop until the workers' handles are empty");
  Program::prepareToSend();

  const StopTimes library = measureLibrary(runs);
  const StopTimes baseline = measureBaseline(runs);
  Table table("cancel",
              "Time to stop a version 5 run; baseline: counted 1 ms sleeps, handles polled every 1000 us");
  table.add(makeRow("both senders", library.sendersMs, baseline.sendersMs));
  table.add(makeRow("senders and listener", library.allMs, baseline.allMs));
  ZorSuite suite;
  suite.DeviceSearchSetProperty(1000, INT32_MAX);
  const auto addReplacement = [&](const char* start, const std::vector<double>& times) {
    table.add(makeRow(start, times, baseline.allMs));
  };
  addReplacement("replaced by SmartConfigV5_Start", measureReplacement(runs, [&] { startSenders(suite); }));
  addReplacement("replaced by SmartConfigV3_Start",
                 measureReplacement(runs, [&] { suite.SmartConfigV3_Start("home", "secret", 100'000); }));
  addReplacement("replaced by SmartConfigOnlineListen",
                 measureReplacement(runs, [&] { suite.SmartConfigOnlineListen(kZorAnnouncementPort); }));
  addReplacement("replaced by DeviceSearch", measureReplacement(runs, [&] { suite.DeviceSearch(); }));
  program.print(table);
}

}  // namespace zor::bench
