#include <sys/resource.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <utility>

#include "ZOR/discovery/ModuleReporter.h"
#include "ZOR/platform/PostReport.h"
#include "ZORBroadcast_SSID_Password.h"
#include "tests/support/SuiteTest.h"

namespace {

/// How many allocations the thread has left; negative for no limit.
thread_local int allocationsLeft = -1;

}  // namespace

/// As libstdc++'s own, whose `operator delete` frees it.
void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

namespace {

using MemoryFault = SuiteTest;

TEST_F(MemoryFault, IsReportedAndSurvived) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  int listening = 0, progress = 0, upgrade = 0;
  bool posted = true;
  const std::string line = "xcmd_notify:0:mac=M1,ver=1,cap=1";
  std::function<void()> closure = [big = std::array<char, 64>{}] { EXPECT_EQ(big[0], 0); };
  // What memory there is goes into blocks of ever smaller size, linked without further memory.
  void* blocks = nullptr;
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit none{1, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &none), 0);
  for (std::size_t size = 1 << 20; size >= 16; size /= 2) {
    while (void* const block = std::malloc(size)) {
      *static_cast<void**>(block) = blocks;
      blocks = block;
    }
  }
  module.send(line, kPort);  // The listener's thread may have an arena with memory left.
  {
    ZorSuite another;
    another.setDelegate(delegate);
    another.SmartConfigV5_Start("home", "secret", 1000);
    progress = another.SmartConfigProgress();
    another.DeviceSearch();
    another.DeviceUpgrade("127.0.0.1", "http://h/f");
    upgrade = another.DeviceUpgradeProgress();
    posted = ZorPostToMainQueue(std::move(closure));
    listening = another.SmartConfigOnlineListen(kPort);
  }
  setrlimit(RLIMIT_AS, &before);
  while (blocks != nullptr) std::free(std::exchange(blocks, *static_cast<void**>(blocks)));

  EXPECT_EQ(progress, -101);
  EXPECT_EQ(upgrade, -121);
  EXPECT_FALSE(posted);
  EXPECT_TRUE(listening == -1 || listening == kPort) << "the stack of the listener before may serve again";
  EXPECT_EQ(suite.SmartConfigOnlineListen(kPort), kPort) << "all is well again with memory";
  EXPECT_TRUE(isHeard("M2"));
}

TEST_F(MemoryFault, NeedsNoneForWhatTheQueueHasNoPlaceFor) {
  while (zor::postReport([] {})) {
  }
  const auto slot = std::make_shared<zor::DelegateSlot>();
  slot->set(delegate);
  zor::LineCounters counters;
  zor::ModuleReporter reporter(zor::kNotificationTag, slot, &ZorSuiteDelegate::onSmartFound, counters);
  char line[] = "xcmd_notify:0:mac=A name beyond a small string,ver=1,cap=1";
  allocationsLeft = 100;
  reporter.take(line, sizeof line - 1, "10.0.0.1");
  EXPECT_EQ(std::exchange(allocationsLeft, -1), 100);
  EXPECT_EQ(counters.dropped, 1);
  ZorRunMainQueue(0);
  allocationsLeft = 0;
  reporter.take(line, sizeof line - 1, "10.0.0.1");
  allocationsLeft = -1;
  EXPECT_EQ(counters.dropped, 2) << "nor is there a report without memory for it";
}

TEST_F(MemoryFault, LeavesTheApplicationsHandlersInPlace) {
  int hooked = 0;
  ZorSetSocketHook([&](std::int32_t) { return ++hooked > 0; });
  ZorRunMainQueue(0);  // Makes the queue.
  allocationsLeft = 0;
  ZorSetSocketHook([](std::int32_t) { return true; });
  ZorSetLogSink([](const char*) {});
  ZorSetMainQueue([](std::function<void()>) {});
  const bool posted = ZorPostToMainQueue([] {});
  ZORBroadcast_SSID_Password wrapper;
  wrapper.startBroadcast_SSID("home", "secret!!");
  wrapper.LogStr("a line that is longer than a small string");
  allocationsLeft = -1;
  EXPECT_FALSE(posted);
  EXPECT_EQ(wrapper.myZorSuite(), nullptr);
  EXPECT_TRUE(ZorPostToMainQueue([] {}));
  EXPECT_EQ(ZorRunMainQueue(0), 1);
  suite.SmartConfigOnlineListen(kPort);
  EXPECT_EQ(hooked, 1);
  ZorLogLine("the sink is still there");
  EXPECT_TRUE(log.has("the sink is still there"));
  ZorSetSocketHook(nullptr);
}

TEST_F(MemoryFault, InAnyAllocationOfAStartLeavesNoHandleBehind) {
  suite.DeviceSearchSetProperty(0, 0);  // A search ends by itself, as does an upgrade from no URL.
  const std::pair<const char*, std::function<void()>> kStarts[] = {
      {"listen", [this] { suite.SmartConfigOnlineListen(kPort); }},
      {"version 5", [this] { startRun(false, 60000); }},
      {"version 3", [this] { startRun(true, 60000); }},
      {"search", [this] { suite.DeviceSearch(); }},
      {"upgrade", [this] { suite.DeviceUpgrade("127.0.0.1", "no"); }}};
  for (const auto& [name, start] : kStarts) {
    bool allocatedAll = false;
    for (int count = 0; !allocatedAll; ++count) {
      allocationsLeft = count;
      start();
      allocatedAll = std::exchange(allocationsLeft, -1) > 0;
      suite.SmartConfigStop();
      for (ZorWorkerHandle* const handle : {&s_threadSmartConfigMc, &s_threadSmartConfigBc, &s_threadUpgrade,
                                            &s_threadSmartOnlineListen, &s_threadDeviceSearch}) {
        ASSERT_TRUE(isOver(*handle)) << name << " after " << count << " allocations";
      }
    }
  }
}

}  // namespace
