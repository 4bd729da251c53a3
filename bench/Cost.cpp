// Measures what the library's threads cost a phone: CPU time and wake-ups, as counted by the kernel.

#include <chrono>
#include <thread>

#include "ZOR/ZorSuite.h"
#include "bench/support/CountedSleepRun.h"
#include "bench/support/Program.h"
#include "bench/support/SampleRun.h"
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

ThreadUse measureCountedSleeps(double seconds) {
  const ThreadIds before = threadIds();
  const CountedSleepRun run(sampleInputs());
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

Row makeRow(const char* activity, const ThreadUse& use, const ThreadUse& baseline, double seconds) {
  const double perMinute = 60 / seconds;
  const auto wakeUps = static_cast<double>(use.wakeUps);
  const auto baselineWakeUps = static_cast<double>(baseline.wakeUps);
  return {{"activity", activity},
          {"measured s", seconds},
          {"CPU ms/min", use.cpuMs * perMinute},
          {"wake-ups/min", wakeUps * perMinute},
          {"baseline CPU ms/min", baseline.cpuMs * perMinute},
          {"baseline wake-ups/min", baselineWakeUps * perMinute},
          {"CPU to baseline", ratio(use.cpuMs, baseline.cpuMs)},
          {"wake-ups to baseline", ratio(wakeUps, baselineWakeUps)}};
}

}  // namespace

void runBenchmark(Program& program) {
  double seconds = 6;
  program.options().add_option("--seconds", seconds, "Length of each measurement");
  program.parse("CPU time and wake-ups of the library's threads, per minute");
  Program::prepareToSend();

  const ThreadUse sleeps = measureCountedSleeps(seconds);
  const ThreadUse receives = measureReceiveLoop(seconds);
  const RunUse provisioning = measureRun(seconds);
  Table table("cost",
              "Cost of the threads; baseline of the senders: counted 1 ms sleeps, of the others: a loop of "
              "10 ms receives");
  table.add(makeRow("version 5 run: both senders", provisioning.senders, sleeps, seconds));
  table.add(makeRow("version 5 run: listener", provisioning.listener, receives, seconds));
  table.add(makeRow("idle listener", measureIdleListener(seconds), receives, seconds));
  table.add(makeRow("search", measureSearch(seconds), receives, seconds));
  table.add(makeRow("upgrade", measureUpgrade(seconds), receives, seconds));
  program.print(table);
}

}  // namespace zor::bench
