// Measures what the library's threads cost a phone: CPU time and wake-ups, as counted by the kernel.

#include <chrono>
#include <thread>

#include "ZOR/ZorSuite.h"
#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
#include "bench/support/SleepingRun.h"
#include "bench/support/Statistics.h"
#include "bench/support/ThreadUse.h"
#include "bench/support/UpgradingModule.h"

namespace zor::bench {
namespace {

void sleepFor(double seconds) {
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

/// Returns what `threads` cost in the next `seconds`.
ThreadUse useDuring(const ThreadIds& threads, double seconds) {
  const ThreadUse before = useOf(threads);
  sleepFor(seconds);
  return useOf(threads) - before;
}

struct RunUse {
  ThreadUse senders;
  ThreadUse listener;
};

RunUse measureRun(double seconds) {
  ZorSuite suite;
  const ThreadIds before = threadIds();
  suite.SmartConfigOnlineListen(kZorAnnouncementPort);
  const ThreadIds listener = threadIdsSince(before);
  const ThreadIds withListener = threadIds();
  startSenders(suite);
  const ThreadIds senders = threadIdsSince(withListener);

  RunUse use{useOf(senders), useOf(listener)};
  sleepFor(seconds);
  use = {useOf(senders) - use.senders, useOf(listener) - use.listener};
  suite.SmartConfigStop();
  waitForSenders();
  s_threadSmartOnlineListen.waitUntilEmpty();
  return use;
}

ThreadUse measureSenders(double seconds) {
  return measureRun(seconds).senders;
}

ThreadUse measureListenerOfRun(double seconds) {
  return measureRun(seconds).listener;
}

template <Sleeps Kind>
ThreadUse measureSleeps(double seconds) {
  const ThreadIds before = threadIds();
  const SleepingRun run(sampleInputs(), Kind);
  return useDuring(threadIdsSince(before), seconds);
}

ThreadUse measureReceiveLoop(double seconds) {
  const ThreadIds before = threadIds();
  const ReceiveLoop loop(0);
  return useDuring(threadIdsSince(before), seconds);
}

ThreadUse measureIdleListener(double seconds) {
  ZorSuite suite;
  const ThreadIds before = threadIds();
  suite.SmartConfigOnlineListen(kZorAnnouncementPort);
  const ThreadUse use = useDuring(threadIdsSince(before), seconds);
  suite.SmartConfigStop();
  s_threadSmartOnlineListen.waitUntilEmpty();
  return use;
}

ThreadUse measureSearch(double seconds) {
  constexpr std::int32_t kIntervalMs = 100;
  ZorSuite suite;
  suite.DeviceSearchSetProperty(kIntervalMs, INT32_MAX);
  const ThreadIds before = threadIds();
  suite.DeviceSearch();
  const ThreadUse use = useDuring(threadIdsSince(before), seconds);
  s_threadDeviceSearch.cancel();
  s_threadDeviceSearch.waitUntilEmpty();
  return use;
}

ThreadUse measureUpgrade(double seconds) {
  UpgradingModule module;
  ZorSuite suite;
  const ThreadIds before = threadIds();
  suite.DeviceUpgrade(UpgradingModule::kIp, "http://10.77.0.1/firmware.bin");
  const ThreadUse use = useDuring(threadIdsSince(before), seconds);
  module.finish();
  s_threadUpgrade.waitUntilEmpty();
  return use;
}

using Measure = ThreadUse (*)(double seconds);

struct Comparison {
  const char* activity;
  Measure measure;
  const char* baselineName;
  Measure baseline;
};

constexpr Comparison kComparisons[] = {
    {"version 5 run: senders", measureSenders, "one sleep a frame", measureSleeps<Sleeps::oneForEachFrame>},
    {"version 5 run: senders", measureSenders, "counted 1 ms sleeps", measureSleeps<Sleeps::counted>},
    {"version 5 run: listener", measureListenerOfRun, "10 ms receives", measureReceiveLoop},
    {"idle listener", measureIdleListener, "10 ms receives", measureReceiveLoop},
    {"search", measureSearch, "10 ms receives", measureReceiveLoop},
    {"upgrade", measureUpgrade, "10 ms receives", measureReceiveLoop},
};

/// The same measurement, repeated: processor time differs by up to a factor of 2 from one to the next.
struct Repeated {
  std::vector<double> cpuMs;
  std::vector<double> wakeUps;

  void add(const ThreadUse& use) {
    cpuMs.push_back(use.cpuMs);
    wakeUps.push_back(static_cast<double>(use.wakeUps));
  }
};

Row makeRow(const Comparison& comparison, double seconds, int repeats) {
  Repeated use;
  Repeated baseline;
  for (int i = 0; i < repeats; ++i) {
    use.add(comparison.measure(seconds));
    baseline.add(comparison.baseline(seconds));
  }
  const double perMinute = 60 / seconds;
  return {{"activity", comparison.activity},
          {"baseline", comparison.baselineName},
          {"CPU ms/min", median(use.cpuMs) * perMinute},
          {"lowest", percentile(use.cpuMs, 0) * perMinute},
          {"highest", percentile(use.cpuMs, 1) * perMinute},
          {"baseline CPU ms/min", median(baseline.cpuMs) * perMinute},
          {"wake-ups/min", median(use.wakeUps) * perMinute},
          {"baseline wake-ups/min", median(baseline.wakeUps) * perMinute},
          {"CPU to baseline", ratio(median(use.cpuMs), median(baseline.cpuMs))},
          {"wake-ups to baseline", ratio(median(use.wakeUps), median(baseline.wakeUps))}};
}

}  // namespace

void runBenchmark(Program& program) {
  double seconds = 3;
  int repeats = 3;
  program.options().add_option("--seconds", seconds, "Length of each measurement");
  program.options()
      .add_option("--repeats", repeats, "Measurements of which the median is shown")
      ->check(CLI::PositiveNumber);
  program.parse("CPU time and wake-ups of the library's threads, per minute");
  Program::prepareToSend();

  Table table("cost", "Cost of the threads: medians of repeated measurements, and the range of the CPU time");
  for (const Comparison& comparison : kComparisons) table.add(makeRow(comparison, seconds, repeats));
  program.print(table);
}

}  // namespace zor::bench
