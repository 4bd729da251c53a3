#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "ZOR/ZorSuite.h"
#include "bench/support/CountedSleepRun.h"
#include "bench/support/LineLoad.h"
#include "bench/support/ThreadUse.h"

namespace zor::bench {

using Clock = std::chrono::steady_clock;

inline constexpr std::int32_t kListenPort = 25010;

/// Counts what it hears and keeps the time of the latest.
class CountingDelegate final : public ZorSuiteDelegate {
 public:
  void onSearchFound(const std::string&, const std::string&, const std::string&, const std::string&,
                     const std::string&) override {}
  void onSmartFound(const std::string&, const std::string&, const std::string&, const std::string&,
                    const std::string&) override {
    latest = Clock::now();
    ++heard;
  }

  std::size_t heard = 0;
  Clock::time_point latest{};
};

/// The library's listener with a load at its port.
class Listener {
 public:
  Listener() {
    const ThreadIds before = threadIds();
    suite.SmartConfigOnlineListen(kListenPort);
    threads = threadIdsSince(before);
    load = std::make_unique<LineLoad>(s_ZorDevice.listenSocket, kListenPort);
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

/// The baseline: a loop that receives and drops, with a load at its port.
class BareReceiver {
 public:
  BareReceiver() {
    const ThreadIds before = threadIds();
    loop = std::make_unique<ReceiveLoop>(kListenPort);
    threads = threadIdsSince(before);
    load = std::make_unique<LineLoad>(loop->descriptor(), kListenPort);
  }

  std::unique_ptr<ReceiveLoop> loop;
  ThreadIds threads;
  std::unique_ptr<LineLoad> load;
};

}  // namespace zor::bench
