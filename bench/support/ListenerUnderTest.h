#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "ZOR/ZorSuite.h"
#include "bench/support/LineLoad.h"
#include "bench/support/SleepingRun.h"
#include "bench/support/ThreadUse.h"

namespace zor::bench {

using Clock = std::chrono::steady_clock;

/// Counts the reported modules and notes when the latest was reported.
class CountingDelegate final : public ZorSuiteDelegate {
 public:
  void onSearchFound(const std::string&, const std::string&, const std::string&, const std::string&,
                     const std::string&) override {}
  void onSmartFound(const std::string&, const std::string&, const std::string&, const std::string&,
                    const std::string&) override {
    latest = Clock::now();
    ++reported;
  }

  std::size_t reported = 0;
  Clock::time_point latest{};
};

/// The library's listener, and a load for it.
class Listener {
 public:
  Listener() {
    const ThreadIds before = threadIds();
    suite.SmartConfigOnlineListen(kZorAnnouncementPort);
    threads = threadIdsSince(before);
    load = std::make_unique<LineLoad>(s_ZorDevice.listenSocket, kZorAnnouncementPort);
  }
  ~Listener() {
    suite.SmartConfigStop();
    s_threadSmartOnlineListen.waitUntilEmpty();
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  ZorSuite suite;
  ThreadIds threads;
  std::unique_ptr<LineLoad> load;
};

/// The baseline: a loop that receives and drops, and a load for it.
class BareReceiver {
 public:
  BareReceiver() {
    const ThreadIds before = threadIds();
    loop = std::make_unique<ReceiveLoop>(kZorAnnouncementPort);
    threads = threadIdsSince(before);
    load = std::make_unique<LineLoad>(loop->descriptor(), kZorAnnouncementPort);
  }

  std::unique_ptr<ReceiveLoop> loop;
  ThreadIds threads;
  std::unique_ptr<LineLoad> load;
};

}  // namespace zor::bench
