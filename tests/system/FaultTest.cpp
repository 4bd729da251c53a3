#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "tests/support/Sanitized.h"
#include "tests/support/SuiteTest.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// How far a clock leaps: a year, or an hour where the suite's clock counts in 32 bits.
constexpr std::int64_t kLeapMs = (sizeof(long) == 8 ? 365 * 24 : 1) * 3'600'000LL;

const std::string kDefaultRoute = "ip route replace default dev zor0";

bool shell(const std::string& command) {
  return std::system(command.c_str()) == 0;
}

/// Frames that have crossed the test's network so far.
long framesOnTheNetwork() {
  std::ifstream counters("/proc/net/dev");
  std::string field;
  while (counters >> field && field != "zor1:") {
  }
  long bytes = -1, frames = -1;
  counters >> bytes >> frames;
  return frames;
}

class Fault : public SuiteTest {
 protected:
  static bool moreFrames(long count) {
    const long before = framesOnTheNetwork();
    return waitUntil([&] { return framesOnTheNetwork() >= before + count; }, 3000);
  }

  /// Starts an upgrade and waits for its command.
  UdpPeer::Datagram startUpgrade(const UdpPeer& upgrading) {
    suite.DeviceUpgrade("127.0.0.1", "http://h/f");
    return upgrading.receive();
  }

  /// Starts every worker but an upgrade, with little time between their datagrams.
  void startRunAndSearch(int searchIntervalMs, int searchCount) {
    s_ZorSmart5_McCharInterval = 5;
    s_ZorSmart5_BcCharInterval = 5;
    suite.DeviceSearchSetProperty(searchIntervalMs, searchCount);
    ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
    startRun(false, 60000);
    suite.DeviceSearch();
  }
};

/// While it lives, the process may open no descriptor more; those that it has still work. The
/// sanitizers open some in their checks, so under them only the library gets none.
class NoDescriptors {
 public:
  explicit NoDescriptors(FakeSystem& system, rlim_t limit = 3) : system_(system) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none{limit, before_.rlim_max};
    if (!kSanitized) setrlimit(RLIMIT_NOFILE, &none);
    system_.denySockets = kSanitized;
  }
  ~NoDescriptors() {
    setrlimit(RLIMIT_NOFILE, &before_);
    system_.denySockets = false;
  }

 private:
  FakeSystem& system_;
  rlimit before_{};
};

TEST_F(Fault, NoDescriptorsIsSurvived) {
  const UdpPeer searched(25000);
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  startRun(true, 60000);
  ASSERT_TRUE(system.waitForSends(2, 2000));
  suite.DeviceSearchSetProperty(20, 1000);
  {
    const NoDescriptors exhausted(system);
    ASSERT_EQ(ZorUdpInit(0), kZorNoSocket);
    EXPECT_EQ(ZorMainQueueDescriptor() < 0, !kSanitized);
    EXPECT_TRUE(isHeard("M1")) << "what is open works on";
    EXPECT_TRUE(system.waitForSends(system.sent().size() + 3, 1000));
    // The sender loses its socket, and the search never had one.
    system.failSendsWhen([](const SentDatagram&) { return true; });
    suite.DeviceSearch();
    const std::size_t before = system.sent().size();
    EXPECT_LT(processorMsWithin(200), 100) << "there is no reason to spin";
    EXPECT_LE(system.sent().size(), before + 1) << "nor anything to send on";
    for (const std::int32_t port : {0, kPort}) EXPECT_EQ(suite.SmartConfigOnlineListen(port), -1);
    EXPECT_FALSE(s_threadSmartOnlineListen);
    suite.DeviceUpgrade("127.0.0.1", "http://h/f");
    EXPECT_TRUE(waitUntil([&] { return suite.DeviceUpgradeProgress() == -121; }, 1000));
  }
  system.failSendsWhen(nullptr);
  const long latest = s_ZorDevice.smartLastMs;
  EXPECT_TRUE(waitUntil([&] { return s_ZorDevice.smartLastMs > latest; }, 2000)) << "the sender sends again";
  EXPECT_FALSE(searched.receive(2000).text.empty()) << "and so does the search";
  EXPECT_GE(ZorMainQueueDescriptor(), 0);
  EXPECT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  EXPECT_TRUE(isHeard("M2"));
}

TEST_F(Fault, ASocketThatStaysReadableWithNothingInItIsNoReasonToSpin) {
  ZorSetSocketHook([](std::int32_t descriptor) {
    shutdown(descriptor, SHUT_RDWR);
    return true;
  });
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  suite.DeviceSearchSetProperty(60000, 2);
  suite.DeviceSearch();
  suite.DeviceUpgrade("127.0.0.1", "http://h/f");
  EXPECT_LT(processorMsWithin(300), 60);
  suite.SmartConfigStop();
  EXPECT_TRUE(isOver(s_threadSmartOnlineListen, 200));
  ZorSetSocketHook(nullptr);
}

TEST_F(Fault, AWaitThatFailsIsNoReasonToSpin) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  {
    const NoDescriptors exhausted(system, 1);  // Fewer than a worker waits for, so poll fails.
    EXPECT_TRUE(isHeard("M1"));
    EXPECT_TRUE(isHeard("M2")) << "it looks every 10 ms";
    EXPECT_LT(processorMsWithin(300), 60);
  }
  suite.SmartConfigStop();
  EXPECT_TRUE(isOver(s_threadSmartOnlineListen, 200));
}

TEST_F(Fault, AnInterfaceMayGoAndItsAddressesMayChange) {
  startRunAndSearch(20, 10000);
  ASSERT_TRUE(moreFrames(20));

  ASSERT_TRUE(shell("ip link set zor0 down"));
  EXPECT_TRUE(waitUntil([&] { return log.has("m)warning 101") && log.has("b)warning 101"); }, 2000));
  const long during = framesOnTheNetwork();
  std::this_thread::sleep_for(milliseconds(100));
  EXPECT_EQ(framesOnTheNetwork(), during);
  ASSERT_TRUE(shell("ip link set zor0 up && " + kDefaultRoute));
  EXPECT_TRUE(moreFrames(20));

  ASSERT_TRUE(shell("ip address flush dev zor0 && ip address add 10.88.0.5/24 dev zor0 && " + kDefaultRoute));
  EXPECT_TRUE(moreFrames(20));
  EXPECT_TRUE(isHeard("M1", "10.88.0.5")) << "the listener hears at the new address";
  EXPECT_TRUE(s_threadSmartConfigMc && s_threadSmartConfigBc && s_threadDeviceSearch);
  EXPECT_EQ(s_ZorDevice.smartStatus, 0);
}

TEST_F(Fault, AClockThatLeapsAheadEndsRunsWhoseTimeIsUp) {
  for (const bool version3 : {false, true}) {
    ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
    startRun(version3, 60000);
    system.clockAheadMs += kLeapMs;
    EXPECT_TRUE(runIsOver(5000));
    EXPECT_TRUE(isOver(s_threadSmartOnlineListen));
  }
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  suite.DeviceSearchSetProperty(50, 5);
  suite.DeviceSearch();
  system.clockAheadMs += kLeapMs;
  EXPECT_TRUE(isOver(s_threadDeviceSearch));
  EXPECT_TRUE(isHeard("M1")) << "a listener has no deadline";
  const UdpPeer upgrading(25000, "127.0.0.1");
  ASSERT_FALSE(startUpgrade(upgrading).text.empty());
  system.clockAheadMs += kLeapMs;
  EXPECT_TRUE(isOver(s_threadUpgrade));
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -100);
}

TEST_F(Fault, AClockThatLeapsBackProlongsNothing) {
  system.clockAheadMs = 1000;
  const UdpPeer upgrading(25000, "127.0.0.1");
  startRunAndSearch(50, 10);
  ASSERT_FALSE(startUpgrade(upgrading).text.empty());

  system.clockAheadMs -= kLeapMs;
  EXPECT_LT(processorMsWithin(300), 200) << "nothing spins";
  EXPECT_TRUE(isOver(s_threadDeviceSearch)) << "a search lasts no longer for it";
  const UdpPeer::Datagram request = upgrading.receive(700);
  EXPECT_FALSE(request.text.empty()) << "an upgrade continues to ask";
  EXPECT_TRUE(isHeard("M1"));
  EXPECT_TRUE(moreFrames(5));
  upgrading.answer(request, "xcmd_rsp:123:ret=0");
  EXPECT_TRUE(waitUntil([&] { return suite.DeviceUpgradeProgress() == 2; }, 1000));
  system.clockAheadMs += 10100;
  EXPECT_TRUE(isOver(s_threadUpgrade)) << "ten seconds of silence are as long as ever";
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -100);

  for (const bool version3 : {false, true}) {
    startRun(version3, 300);
    suite.DeviceSearch();
    system.clockAheadMs -= kLeapMs;
    EXPECT_TRUE(runIsOver()) << "a run keeps to its time-out, and a block";
    EXPECT_TRUE(isOver(s_threadDeviceSearch));
  }
}

TEST_F(Fault, ADelegateMayDoAnything) {
  auto mortal = std::make_unique<ZorSuite>();
  mortal->setDelegate(delegate);
  ASSERT_EQ(mortal->SmartConfigOnlineListen(kPort), kPort);
  startRun(false, 60000);
  delegate->act = [] { throw std::runtime_error("the application's"); };
  EXPECT_TRUE(isHeard("M1"));
  EXPECT_TRUE(isHeard("M2"));

  delegate->act = [this] {
    delegate->act = [] {};
    const std::size_t before = system.sent().size();
    module.send("xcmd_notify:0:mac=M4,ver=1,cap=1", kPort);
    std::this_thread::sleep_for(milliseconds(1500));
    EXPECT_GT(system.sent().size(), before + 30) << "the senders do not wait for the application";
  };
  EXPECT_TRUE(isHeard("M3"));
  EXPECT_TRUE(drainUntil(delegate->announced, 4)) << "what came meanwhile was kept";

  delegate->act = [this, &mortal] {
    delegate->act = [] {};
    mortal->SmartConfigStop();
    mortal->SmartConfigV5_Start("second", "secret", 60000);
    EXPECT_EQ(mortal->SmartConfigOnlineListen(kPort), kPort);
    mortal->DeviceSearch();
    mortal->DeviceUpgrade("127.0.0.1", "https://refused");
    mortal->SmartConfigV3_Start("third", "secret", 60000);
    mortal->SmartConfigStop();
    mortal->SmartConfigOnlineListen(kPort);
    ZorRunMainQueue(0);
    mortal.reset();
  };
  const auto before = steady_clock::now();
  EXPECT_TRUE(isHeard("M5"));
  EXPECT_LT(steady_clock::now() - before, milliseconds(1500));
  EXPECT_EQ(mortal, nullptr);
  EXPECT_TRUE(isHeard("M6")) << "the listener still has the delegate that the suite had";
}

TEST_F(Fault, ForkLeavesTheParentRunning) {
  const char* const exitWithDescriptors = "exit $(ls /proc/self/fd | wc -l)";
  const int before = std::system(exitWithDescriptors);
  startRunAndSearch(20, 10000);
  ZorMainQueueDescriptor();
  ASSERT_TRUE(system.waitForSends(6, 2000));
  for (const bool executes : {false, true}) {
    const pid_t child = fork();
    if (child == 0) {
      if (executes) execl("/bin/sh", "sh", "-c", exitWithDescriptors, nullptr);
      _exit(7);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), executes ? WEXITSTATUS(before) : 7)
        << "no descriptor of the library is left to it";
  }
  EXPECT_TRUE(system.waitForSends(system.sent().size() + 10, 2000));
  EXPECT_TRUE(isHeard("M1"));
  suite.SmartConfigStop();
  EXPECT_TRUE(runIsOver(500));
}

}  // namespace
