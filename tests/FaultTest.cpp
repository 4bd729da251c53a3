#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Module.h"
#include "tests/support/RecordingDelegate.h"
#include "tests/support/Sanitized.h"
#include "tests/support/Wait.h"
#include "tests/support/Workers.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::int32_t kPort = 25010;

/// How far a clock leaps: a year, or an hour where the suite's clock counts in 32 bits.
constexpr std::int64_t kLeapMs = (sizeof(long) == 8 ? 365 * 24 : 1) * 3'600'000LL;

const std::string kDefaultRoute = "ip route replace default dev zor0";

bool shell(const std::string& command) {
  return std::system(command.c_str()) == 0;
}

/// Frames that have crossed the test's network so far.
long framesOnTheNetwork() {
  std::ifstream counters("/proc/net/dev");
  for (std::string line; std::getline(counters, line);) {
    const std::size_t name = line.find("zor1:");
    if (name == std::string::npos) continue;
    std::istringstream fields(line.substr(name + 5));
    long octets = 0, frames = 0;
    fields >> octets >> frames;
    return frames;
  }
  return -1;
}

std::string announcement(int number) {
  return "xcmd_notify:0:mac=M" + std::to_string(number) + ",ver=1,cap=1";
}

bool sendersEmpty() {
  return !s_threadSmartConfigMc && !s_threadSmartConfigBc;
}

double processorMs() {
  return static_cast<double>(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

/// Does in a callback whatever a test wants done there.
class ActingDelegate : public RecordingDelegate {
 public:
  void onSmartFound(const std::string& moduleId, const std::string& MODULE_IP, const std::string& MODULE_VER,
                    const std::string& MODULE_CAP, const std::string& MODULE_EXT) override {
    RecordingDelegate::onSmartFound(moduleId, MODULE_IP, MODULE_VER, MODULE_CAP, MODULE_EXT);
    if (act) act();
  }

  std::function<void()> act;
};

class Fault : public testing::Test {
 protected:
  Fault() { suite->setDelegate(delegate); }
  ~Fault() override {
    system.clockAheadMs += kLeapMs;  // Ends an upgrade.
    endWorkers();
  }

  /// True when a module that announces itself now is heard of.
  bool isHeard(int number, const std::string& address = "127.0.0.1") {
    const std::size_t before = delegate->announced.size();
    module.send(announcement(number), kPort, address);
    return drainUntil(delegate->announced, before + 1);
  }

  bool moreFrames(long count) {
    const long before = framesOnTheNetwork();
    return waitUntil([&] { return framesOnTheNetwork() >= before + count; }, 3000);
  }

  FakeSystem system;
  LogCapture log;
  std::shared_ptr<ActingDelegate> delegate = std::make_shared<ActingDelegate>();
  std::unique_ptr<ZorSuite> suite = std::make_unique<ZorSuite>();
  Module module{0, "127.0.0.1"};
};

/// While it lives, the process may open no descriptor more; those that it has go on working. The
/// sanitizers open some in their checks, so under them only the library gets none.
class NoDescriptors {
 public:
  explicit NoDescriptors(FakeSystem& system) : system_(system) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none{3, before_.rlim_max};
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

TEST_F(Fault, OfMissingDescriptorsPasses) {
  const Module searched(25000);
  ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  suite->SmartConfigV3_Start("home", "secret", 60000);
  ASSERT_TRUE(system.waitForSends(2, 2000));
  suite->DeviceSearchSetProperty(20, 1000);
  {
    const NoDescriptors exhausted(system);
    ASSERT_EQ(ZorUdpInit(0), kZorNoSocket);
    EXPECT_EQ(ZorMainQueueDescriptor() < 0, !kSanitized);
    EXPECT_TRUE(isHeard(1)) << "what is open works on";
    EXPECT_TRUE(system.waitForSends(system.sent().size() + 3, 1000));
    // The sender loses its socket, and the search never had one.
    system.failSendsWhen([](const SentDatagram&) { return true; });
    suite->DeviceSearch();
    const std::size_t before = system.sent().size();
    const double processor = processorMs();
    std::this_thread::sleep_for(milliseconds(200));
    EXPECT_LE(system.sent().size(), before + 1) << "there is nothing to send on";
    EXPECT_LT(processorMs() - processor, 100) << "nor a reason to spin";
    EXPECT_EQ(suite->SmartConfigOnlineListen(0), -1);
    suite->DeviceUpgrade("127.0.0.1", "http://h/f");
    EXPECT_TRUE(waitUntil([&] { return suite->DeviceUpgradeProgress() == -121; }, 1000));
  }
  system.failSendsWhen(nullptr);
  const long latest = s_ZorDevice.smartLastMs;
  EXPECT_TRUE(waitUntil([&] { return s_ZorDevice.smartLastMs > latest; }, 2000)) << "the sender sends again";
  EXPECT_FALSE(searched.receive(2000).line.empty()) << "and so does the search";
  EXPECT_GE(ZorMainQueueDescriptor(), 0);
  EXPECT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  EXPECT_TRUE(isHeard(2));
}

TEST_F(Fault, OfTheInterfacePassesAndAddressesMayChange) {
  s_ZorSmart5_McCharInterval = 5;
  s_ZorSmart5_BcCharInterval = 5;
  suite->DeviceSearchSetProperty(20, 10000);
  ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  suite->SmartConfigV5_Start("home", "secret", 60000);
  suite->DeviceSearch();
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
  EXPECT_TRUE(isHeard(1, "10.88.0.5")) << "the listener hears at the new address";
  EXPECT_TRUE(s_threadSmartConfigMc && s_threadSmartConfigBc && s_threadDeviceSearch);
  EXPECT_EQ(s_ZorDevice.smartStatus, 0);
}

TEST_F(Fault, OfAClockThatLeapsAheadEndsWhatItsTimeIsUpFor) {
  for (const bool version3 : {false, true}) {
    ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
    if (version3) suite->SmartConfigV3_Start("home", "secret", 60000);
    if (!version3) suite->SmartConfigV5_Start("", "", 60000);
    system.clockAheadMs += kLeapMs;
    EXPECT_TRUE(waitUntil(sendersEmpty, 5000));
    EXPECT_TRUE(waitUntil([] { return !s_threadSmartOnlineListen; }, 1000));
  }
  ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  suite->DeviceSearchSetProperty(50, 5);
  suite->DeviceSearch();
  system.clockAheadMs += kLeapMs;
  EXPECT_TRUE(waitUntil([] { return !s_threadDeviceSearch; }, 1000));
  EXPECT_TRUE(isHeard(1)) << "a listener has no deadline";
  const Module upgrading(25000, "127.0.0.1");
  suite->DeviceUpgrade("127.0.0.1", "http://h/f");
  ASSERT_FALSE(upgrading.receive().line.empty());
  system.clockAheadMs += kLeapMs;
  EXPECT_TRUE(waitUntil([] { return !s_threadUpgrade; }, 1000));
  EXPECT_EQ(suite->DeviceUpgradeProgress(), -100);
}

TEST_F(Fault, OfAClockThatLeapsBackHoldsNothingUp) {
  ZorGetUsec();
  system.clockAheadMs = 1000;
  const Module upgrading(25000, "127.0.0.1");
  suite->DeviceSearchSetProperty(50, 10);
  s_ZorSmart5_McCharInterval = 5;
  ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  suite->SmartConfigV5_Start("home", "secret", 60000);
  suite->DeviceSearch();
  suite->DeviceUpgrade("127.0.0.1", "http://h/f");
  ASSERT_FALSE(upgrading.receive().line.empty());

  system.clockAheadMs -= kLeapMs;
  const double processor = processorMs();
  EXPECT_TRUE(waitUntil([] { return !s_threadDeviceSearch; }, 2000)) << "a search lasts no longer for it";
  const Module::Request request = upgrading.receive(700);
  EXPECT_FALSE(request.line.empty()) << "an upgrade goes on asking";
  EXPECT_TRUE(isHeard(1));
  EXPECT_TRUE(moreFrames(5));
  EXPECT_LT(processorMs() - processor, 1000);
  upgrading.answer(request, "xcmd_rsp:123:ret=0");
  EXPECT_TRUE(waitUntil([&] { return suite->DeviceUpgradeProgress() == 2; }, 1000));
  system.clockAheadMs += 10100;
  EXPECT_TRUE(waitUntil([] { return !s_threadUpgrade; }, 1000))
      << "ten seconds of silence are as long as ever";
  EXPECT_EQ(suite->DeviceUpgradeProgress(), -100);

  for (const bool version3 : {false, true}) {
    if (version3) suite->SmartConfigV3_Start("", "", 300);
    if (!version3) suite->SmartConfigV5_Start("", "", 300);
    suite->DeviceSearch();
    system.clockAheadMs -= kLeapMs;
    EXPECT_TRUE(waitUntil(sendersEmpty, 3000)) << "a run keeps to its time-out, and a block";
    EXPECT_TRUE(waitUntil([] { return !s_threadDeviceSearch; }, 2000));
  }
}

TEST_F(Fault, OfADelegateStaysItsOwn) {
  ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  suite->SmartConfigV5_Start("home", "secret", 60000);
  delegate->act = [] { throw std::runtime_error("the application's"); };
  EXPECT_TRUE(isHeard(1));
  EXPECT_TRUE(isHeard(2));

  delegate->act = [this] {
    delegate->act = nullptr;
    const std::size_t before = system.sent().size();
    module.send(announcement(4), kPort);
    std::this_thread::sleep_for(milliseconds(1500));
    EXPECT_GT(system.sent().size(), before + 30) << "the senders do not wait for the application";
  };
  EXPECT_TRUE(isHeard(3));
  EXPECT_TRUE(drainUntil(delegate->announced, 4)) << "what came meanwhile was kept";

  delegate->act = [this] {
    delegate->act = nullptr;
    suite->SmartConfigStop();
    suite->SmartConfigV5_Start("second", "secret", 60000);
    EXPECT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
    suite->DeviceSearch();
    suite->DeviceUpgrade("127.0.0.1", "https://refused");
    suite->SmartConfigV3_Start("third", "secret", 60000);
    suite->SmartConfigStop();
    suite->SmartConfigOnlineListen(kPort);
    ZorRunMainQueue(0);
    suite.reset();
  };
  const auto before = steady_clock::now();
  EXPECT_TRUE(isHeard(5));
  EXPECT_LT(steady_clock::now() - before, milliseconds(1500));
  EXPECT_EQ(suite, nullptr);
  EXPECT_TRUE(isHeard(6)) << "the listener still has the delegate that the suite had";
}

TEST_F(Fault, IsNotWhatAForkIsToTheParent) {
  const std::string descriptors = "ls /proc/self/fd | wc -l";
  const int before = std::system(("exit $(" + descriptors + ")").c_str());
  ASSERT_EQ(suite->SmartConfigOnlineListen(kPort), kPort);
  suite->SmartConfigV5_Start("home", "secret", 60000);
  suite->DeviceSearchSetProperty(20, 10000);
  suite->DeviceSearch();
  ZorMainQueueDescriptor();
  ASSERT_TRUE(system.waitForSends(6, 2000));
  for (const bool executes : {false, true}) {
    const pid_t child = fork();
    if (child == 0) {
      if (executes) execl("/bin/sh", "sh", "-c", ("exit $(" + descriptors + ")").c_str(), nullptr);
      _exit(7);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), executes ? WEXITSTATUS(before) : 7) << "none of ours is left to it";
  }
  EXPECT_TRUE(system.waitForSends(system.sent().size() + 10, 2000));
  EXPECT_TRUE(isHeard(1));
  suite->SmartConfigStop();
  EXPECT_TRUE(waitUntil(sendersEmpty, 500));
}

}  // namespace
