#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/RecordingDelegate.h"
#include "tests/support/Sanitized.h"
#include "tests/support/UdpPeer.h"
#include "tests/support/Workers.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::int32_t kPort = 25010;

/// Storms are short unless scripts/storm asks for their full length.
int length(int brief, int full) {
  return std::getenv("ZOR_STORM_FULL") != nullptr ? full : brief;
}

int below(int bound) {
  static std::mt19937 generator = [] {
    const char* const given = std::getenv("ZOR_STORM_SEED");
    const unsigned seed = given != nullptr ? static_cast<unsigned>(std::atoi(given)) : std::random_device()();
    std::cout << "ZOR_STORM_SEED=" << seed << "\n";
    return std::mt19937(seed);
  }();
  return std::uniform_int_distribution<int>(0, bound - 1)(generator);
}

/// What a process may not use more and more of.
struct Usage {
  static long entries(const char* directory) {
    const std::filesystem::directory_iterator listing(directory);
    return std::distance(begin(listing), end(listing));
  }
  static long residentPages() {
    long size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident;
  }

  long descriptors = entries("/proc/self/fd");
  long threads = entries("/proc/self/task");
  long memoryKib = residentPages() * 4;
};

/// Nothing has grown since `before`, but for the last instructions of threads and `spareKib` of memory.
void expectFlat(const Usage& before, long spareKib = 1024) {
  EXPECT_TRUE(waitUntil([&] { return Usage().threads <= before.threads; }, 5000));
  const Usage after;
  std::cout << "descriptors " << before.descriptors << " -> " << after.descriptors << ", threads "
            << before.threads << " -> " << after.threads << ", resident " << before.memoryKib << " -> "
            << after.memoryKib << " KiB\n";
  EXPECT_LE(after.descriptors, before.descriptors);
  EXPECT_TRUE(kSanitized || after.memoryKib <= before.memoryKib + spareKib);
}

void endEverything() {
  endWorkers();
  while (ZorRunMainQueue(0) > 0) {
  }
}

/// One start of any kind, through any suite, with any parameters.
void startAnything(ZorSuite& suite, const UdpPeer& announcer) {
  const std::string ssid(static_cast<std::size_t>(below(40)), 's');
  std::array<std::uint8_t, 14> pacing{};
  for (std::uint8_t& byte : pacing) byte = static_cast<std::uint8_t>(below(4));
  switch (below(7)) {
    case 0:
      suite.SmartConfigV5_SetProperty(pacing.data(), pacing.size());
      suite.SmartConfigV5_MixV3Enable(static_cast<std::uint8_t>(below(2)));
      suite.SmartConfigV5_Append(pacing.data(), static_cast<std::size_t>(below(15)));
      [[fallthrough]];
    case 1:
      return suite.SmartConfigV5_Start(ssid, "secret", below(300) - 5);
    case 2:
      return suite.SmartConfigV3_Start(ssid, "secret", below(300) - 5);
    case 3:
      EXPECT_GE(suite.SmartConfigOnlineListen(below(2) * kPort), kPort);
      return announcer.send("xcmd_notify:0:mac=" + std::to_string(below(1000)), kPort);
    case 4:
      suite.DeviceSearchSetProperty(below(3), below(50));
      return suite.DeviceSearch();
    case 5:
      return suite.DeviceUpgrade("127.0.0.1", below(2) == 0 ? "http://h/f" : "https://refused");
    default:
      ZorRunMainQueue(0);
  }
}

TEST(Storm, OfStartsAndStopsLeaksNothing) {
  ZorSetLogSink([](const char*) {});
  ZorGetUsec();
  std::atomic<bool> over{false};
  std::thread refusing([&over] {
    const UdpPeer module(25000, "127.0.0.1");
    while (!over) {
      const UdpPeer::Datagram request = module.receive(20);
      if (!request.text.empty()) module.answer(request, "xcmd_rsp:123:ret=-1");
    }
  });
  const UdpPeer announcer(0, "127.0.0.1");
  const int sequences = length(300, 10000);
  std::vector<Usage> usage;
  for (int sequence = 0; sequence < sequences; ++sequence) {
    ZorSuite suite;
    suite.setDelegate(std::make_shared<RecordingDelegate>());
    startAnything(suite, announcer);
    if (below(3) == 0) std::this_thread::sleep_for(std::chrono::microseconds(below(3000)));
    suite.SmartConfigStop();
    startAnything(suite, announcer);
    // Allocators and thread stacks have their size after a tenth.
    if (sequence == sequences / 10) {
      endEverything();
      std::this_thread::sleep_for(milliseconds(50));
      usage.emplace_back();
    }
  }
  endEverything();
  std::cout << sequences << " sequences: ";
  expectFlat(usage.at(0));
  over = true;
  refusing.join();
}

TEST(Storm, OfAnnouncementsIsHeardToTheLast) {
  constexpr int kModules = 10000, kBatch = 100;
  const int announcements = length(20000, 1000000);
  std::vector<int> heard(kModules, 0);
  const auto delegate = std::make_shared<RecordingDelegate>();
  ZorSuite suite;
  suite.setDelegate(delegate);
  const UdpPeer module(0, "127.0.0.1");
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  const auto started = steady_clock::now();
  std::vector<Usage> usage;
  for (int sent = 0; sent < announcements;) {
    for (int i = 0; i < kBatch; ++i, ++sent) {
      module.send("xcmd_notify:" + std::to_string(sent) + ":mac=" + std::to_string(sent % kModules) +
                      ",ver=1,cap=1,model=lamp\r\n",
                  kPort);
    }
    ASSERT_TRUE(drainUntil(delegate->announced, kBatch, 5000)) << "of the last up to " << sent;
    for (const std::string& entry : std::exchange(delegate->announced, {}))
      ++heard.at(static_cast<std::size_t>(std::stoi(entry)));
    if (sent == announcements / 10) usage.emplace_back();
  }
  const std::chrono::duration<double> took = steady_clock::now() - started;
  std::cout << announcements << " announcements in " << took.count() << " s: ";
  for (const int times : heard) EXPECT_EQ(times, announcements / kModules);
  expectFlat(usage.at(0));
  endEverything();
}

/// Sends garbage to the listener at the rate of a full Gigabit Ethernet line, or as fast as it can.
class Flood {
 public:
  Flood() {
    for (std::string& datagram : garbage_) datagram = anyDatagram();
    thread_ = std::thread([this] { run(); });
  }
  ~Flood() {
    over_ = true;
    thread_.join();
    const std::chrono::duration<double> took = steady_clock::now() - start_;
    std::cout << datagrams_ << " garbage datagrams, " << static_cast<double>(bytes_) * 8e-6 / took.count()
              << " Mbit/s; ";
  }

 private:
  static constexpr std::int64_t kFrameOverhead = 66;  // Ethernet with preamble and gap, IPv4, UDP.

  static std::string anyDatagram() {
    std::string datagram = below(2) == 0 ? "xcmd_notify:" : "";
    // One in sixteen announces a module that is none.
    if (below(16) == 0) return "xcmd_notify:1:mac=X" + std::to_string(below(1 << 30)) + ",cap=1";
    for (int rest = below(1440); rest > 0; --rest) datagram += static_cast<char>(below(256));
    return datagram;
  }

  void run() {
    const UdpPeer source(0, "127.0.0.1");
    while (!over_) {
      const std::string& datagram = garbage_[datagrams_++ % garbage_.size()];
      source.send(datagram, kPort);
      bytes_ += static_cast<std::int64_t>(datagram.size()) + kFrameOverhead;
      const auto due = start_ + std::chrono::nanoseconds(bytes_ * 8);
      if (due > steady_clock::now() + milliseconds(1)) std::this_thread::sleep_until(due);
    }
  }

  std::array<std::string, 2048> garbage_;
  steady_clock::time_point start_ = steady_clock::now();
  std::size_t datagrams_ = 0;
  std::int64_t bytes_ = 0;
  std::atomic<bool> over_{false};
  std::thread thread_;
};

TEST(Storm, OfGarbageDoesNotDrownAModule) {
  const milliseconds lasts(length(2000, 60000));
  const auto delegate = std::make_shared<RecordingDelegate>();
  ZorSuite suite;
  suite.setDelegate(delegate);
  const auto hears = [&delegate](const std::string& id) {
    const std::vector<std::string> heard = std::exchange(delegate->announced, {});
    return std::any_of(heard.begin(), heard.end(),
                       [&](const std::string& entry) { return entry.starts_with(id + "|"); });
  };
  const UdpPeer module(0, "127.0.0.1");
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  const Usage before;
  milliseconds worst(0);
  int modules = 0, repeats = 0;
  {
    const Flood flood;
    const auto end = steady_clock::now() + lasts;
    for (; steady_clock::now() < end; ++modules) {
      const std::string id = "GENUINE" + std::to_string(modules);
      const auto announced = steady_clock::now();
      // As modules do, it repeats itself: the system drops what does not fit into the socket.
      for (auto next = announced; !hears(id); ZorRunMainQueue(1)) {
        if (steady_clock::now() < next) continue;
        module.send("xcmd_notify:1:mac=" + id + ",ver=1,cap=1\r\n", kPort);
        next += milliseconds(50);
        ++repeats;
        ASSERT_LT(steady_clock::now() - announced, milliseconds(1000)) << id;
      }
      worst = std::max(worst, std::chrono::duration_cast<milliseconds>(steady_clock::now() - announced));
      while (ZorRunMainQueue(20) > 0 && steady_clock::now() < announced + milliseconds(100)) {
      }
    }
  }
  std::cout << modules << " modules announced themselves " << repeats << " times, heard after at most "
            << worst.count() << " ms: ";
  EXPECT_GT(modules, 0);
  expectFlat(before, 8 * 1024);
  endEverything();
}

}  // namespace
