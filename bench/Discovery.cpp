// Measures the listener for announcements: lines per second, lines lost under load, the time until the
// delegate is called, the cost of a full table, and the heap allocations of lines that it drops.

#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>

#include "ZOR/discovery/ModuleReporter.h"
#include "bench/support/AllocationCount.h"
#include "bench/support/ListenerUnderTest.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

[[noreturn]] void fail(const char* what) {
  std::cerr << what << "\n";
  std::exit(1);
}

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Throughput {
  double linesPerSecond = 0;
  double cpuUsPerLine = 0;
};

/// Measures a `Listener` or a `BareReceiver`: both have a load and threads.
template <class Receiver>
Throughput measureThroughput(Receiver& receiver, LineKind kind, std::size_t lines) {
  const ThreadUse before = useOf(receiver.threads);
  const Clock::time_point start = Clock::now();
  receiver.load->sendAll(kind, lines);
  const double seconds = secondsSince(start);
  const ThreadUse use = useOf(receiver.threads) - before;
  const auto count = static_cast<double>(lines);
  return {count / seconds, use.cpuMs * 1000 / count};
}

/// Measures new modules, each of which is reported to the delegate. No buffer fills up: few are pending.
Throughput measureReports(std::size_t lines) {
  constexpr std::size_t kMaxPending = 128;
  Listener listener;
  const auto delegate = std::make_shared<CountingDelegate>();
  listener.suite.setDelegate(delegate);
  const ThreadUse before = useOf(listener.threads);
  const Clock::time_point start = Clock::now();
  for (std::size_t sent = 0; delegate->reported < lines;) {
    if (sent < lines && sent - delegate->reported < kMaxPending) {
      listener.load->send(LineKind::fresh, LineLoad::kBatch);
      sent += LineLoad::kBatch;
    } else if (ZorRunMainQueue(1000) == 0) {
      fail("a module was not reported");
    }
  }
  const ThreadUse use = useOf(listener.threads) - before;
  const auto count = static_cast<double>(delegate->reported);
  return {count / secondsSince(start), use.cpuMs * 1000 / count};
}

Table throughputTable(std::size_t lines) {
  Table table("discovery-throughput",
              "Lines through the listener on loopback; baseline: a loop that only receives");
  BareReceiver bare;
  const Throughput baseline = measureThroughput(bare, LineKind::garbage, lines);
  bare.loop.reset();
  const auto add = [&](const char* kind, const Throughput& measured) {
    table.add({{"lines", kind},
               {"lines/s", measured.linesPerSecond},
               {"CPU us/line", measured.cpuUsPerLine},
               {"baseline lines/s", baseline.linesPerSecond},
               {"baseline CPU us/line", baseline.cpuUsPerLine},
               {"lines/s to baseline", ratio(measured.linesPerSecond, baseline.linesPerSecond)},
               {"CPU to baseline", ratio(measured.cpuUsPerLine, baseline.cpuUsPerLine)}});
  };
  add("new, delegate called", measureReports(lines / 10));
  Listener listener;
  add("new, no delegate", measureThroughput(listener, LineKind::fresh, lines));
  add("repeated", measureThroughput(listener, LineKind::repeat, lines));
  add("garbage", measureThroughput(listener, LineKind::garbage, lines));
  return table;
}

template <class Receiver>
double lostPercent(LineKind kind, std::size_t seconds) {
  constexpr std::size_t kPerMillisecond = 50;
  Receiver receiver;
  receiver.load->sendPaced(kind, kPerMillisecond, seconds * 1000);
  return 100.0 * receiver.load->dropped() / static_cast<double>(kPerMillisecond * seconds * 1000);
}

Table lossTable(std::size_t seconds) {
  Table table("discovery-loss", "Lines lost at 50,000 lines per second, default socket buffer");
  const double baseline = lostPercent<BareReceiver>(LineKind::repeat, seconds);
  for (const auto& [name, kind] :
       {std::pair{"new", LineKind::fresh}, {"repeated", LineKind::repeat}, {"garbage", LineKind::garbage}}) {
    const double lost = lostPercent<Listener>(kind, seconds);
    table.add({{"lines", name},
               {"seconds", seconds},
               {"lost %", lost},
               {"baseline lost %", baseline},
               {"received to baseline", ratio(100 - lost, 100 - baseline)}});
  }
  return table;
}

double microseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::micro>(duration).count();
}

std::vector<double> listenerLatencies(int lines) {
  Listener listener;
  const auto delegate = std::make_shared<CountingDelegate>();
  listener.suite.setDelegate(delegate);
  std::vector<double> latencies;
  for (int line = 0; line < lines; ++line) {
    const Clock::time_point sent = Clock::now();
    const std::size_t reported = delegate->reported;
    listener.load->send(LineKind::fresh, 1);
    while (delegate->reported == reported) ZorRunMainQueue(10);
    latencies.push_back(microseconds(delegate->latest - sent));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return latencies;
}

/// The baseline: a thread that blocks in a receive and wakes another one through a condition variable.
std::vector<double> bareLatencies(int lines) {
  const std::int32_t descriptor = ZorUdpInit(kZorAnnouncementPort);
  LineLoad load(descriptor, kZorAnnouncementPort);
  std::mutex mutex;
  std::condition_variable arrived;
  int count = 0;
  std::thread receiver([&] {
    char line[kMaxLineLength + 1];
    for (int received = 0; received < lines;) {
      if (ZorUdpRecvData(descriptor, line, kMaxLineLength, nullptr, nullptr) <= 0) continue;
      const std::lock_guard lock(mutex);
      count = ++received;
      arrived.notify_one();
    }
  });
  std::vector<double> latencies;
  for (int line = 1; line <= lines; ++line) {
    const Clock::time_point sent = Clock::now();
    load.send(LineKind::garbage, 1);
    std::unique_lock lock(mutex);
    arrived.wait(lock, [&] { return count == line; });
    latencies.push_back(microseconds(Clock::now() - sent));
    lock.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  receiver.join();
  ZorUdpClose(descriptor);
  return latencies;
}

Table latencyTable(int lines) {
  const std::vector<double> library = listenerLatencies(lines);
  const std::vector<double> bare = bareLatencies(lines);
  Table table("discovery-latency",
              "Time from a datagram's send to the delegate; baseline: a receive and a wake-up");
  for (const auto& [name, share] : {std::pair{"median", 0.5}, {"p99", 0.99}}) {
    table.add({{"of " + std::to_string(lines) + " lines", name},
               {"latency us", percentile(library, share)},
               {"baseline us", percentile(bare, share)},
               {"to baseline", ratio(percentile(library, share), percentile(bare, share))}});
  }
  return table;
}

/// Returns the nanoseconds for a repeated line when the table holds `known` modules, its own as the last.
double repeatNs(int known) {
  constexpr int kRepeats = 200'000;
  LineCounters counters;
  ModuleReporter reporter(kNotificationTag, nullptr, &ZorSuiteDelegate::onSmartFound, counters);
  const auto announce = [&reporter](int id) {
    char line[kMaxLineLength + 1];
    const int length =
        std::snprintf(line, sizeof line, "xcmd_notify:1:mac=%08x,ver=1.0,cap=0x1,name=module,\r\n", id);
    reporter.take(line, length, "10.77.0.2");
  };
  for (int id = 1; id <= known; ++id) announce(id);
  const Clock::time_point start = Clock::now();
  for (int repeat = 0; repeat < kRepeats; ++repeat) announce(known);
  return secondsSince(start) * 1e9 / kRepeats;
}

Table recordTable() {
  repeatNs(1);  // The first measurement is slower: caches and the clock speed are cold.
  const double one = repeatNs(1);
  Table table("discovery-table", "Time to read and drop a repeated line; baseline: one known module");
  for (const int known : {1, 10, 100}) {
    const double ns = known == 1 ? one : repeatNs(known);
    table.add({{"known modules", known}, {"ns/line", ns}, {"to baseline", ratio(ns, one)}});
  }
  return table;
}

/// Returns the heap allocations of all threads per line.
double allocationsPerLine(Listener& listener, LineKind kind, std::size_t lines) {
  listener.load->sendAll(LineKind::repeat, 1);
  const std::int64_t before = allocationCount();
  listener.load->sendAll(kind, lines);
  return static_cast<double>(allocationCount() - before) / static_cast<double>(lines);
}

Table allocationTable(std::size_t lines) {
  Listener listener;
  const double garbage = allocationsPerLine(listener, LineKind::garbage, lines);
  const double repeated = allocationsPerLine(listener, LineKind::repeat, lines);
  listener.suite.setDelegate(std::make_shared<CountingDelegate>());
  const double reported = allocationsPerLine(listener, LineKind::fresh, 512);
  while (ZorRunMainQueue(10) > 0) continue;
  Table table("discovery-allocations", "Heap allocations per line; baseline: a new module that is reported");
  for (const auto& [name, count] :
       {std::pair{"garbage", garbage}, {"repeated", repeated}, {"reported", reported}}) {
    table.add({{"lines", name}, {"allocations/line", count}, {"to baseline", ratio(count, reported)}});
  }
  return table;
}

}  // namespace

void runBenchmark(Program& program) {
  std::size_t lines = 400'000;
  std::size_t seconds = 3;
  int latencies = 1000;
  program.options().add_option("--lines", lines, "Lines of each load");
  program.options().add_option("--seconds", seconds, "Length of each load of 50,000 lines per second");
  program.options().add_option("--latencies", latencies, "Lines whose time to the delegate is measured");
  program.parse("The listener for announcements under load");
  Program::prepareToSend();

  program.print(throughputTable(lines));
  program.print(lossTable(seconds));
  program.print(latencyTable(latencies));
  program.print(recordTable());
  program.print(allocationTable(lines));
}

}  // namespace zor::bench
