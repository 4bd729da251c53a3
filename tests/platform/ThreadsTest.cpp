#include <poll.h>
#include <pthread.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "tests/support/SuiteTest.h"

namespace {

using Body = std::function<void()>;

/// A thread of the application that may end in the middle of its body.
class Thread {
 public:
  explicit Thread(Body body) : body_(std::move(body)) { pthread_create(&thread_, nullptr, run, this); }
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  void cancel() { pthread_cancel(thread_); }

  /// True when it ended before its body did.
  bool endedEarly() {
    pthread_join(thread_, nullptr);
    return !finished_;
  }

 private:
  static void* run(void* self) {
    static_cast<Thread*>(self)->body_();
    static_cast<Thread*>(self)->finished_ = true;
    return nullptr;
  }

  Body body_;
  bool finished_ = false;
  pthread_t thread_{};
};

void exitThread() {
  pthread_exit(nullptr);
}

void cancelOneself() {
  pthread_cancel(pthread_self());
  pthread_testcancel();
}

const std::pair<const char*, void (*)()> kEnds[] = {{"exit", exitThread}, {"cancel", cancelOneself}};

using ThreadEnd = SuiteTest;
using ThreadNames = SuiteTest;

using Names = std::multiset<std::string>;

/// The names of the process's threads that the library has named.
Names namesOfWorkers() {
  Names names;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(thread.path() / "comm");
    std::string name;
    if (std::getline(file, name) && name.rfind("zor-", 0) == 0) names.insert(name);
  }
  return names;
}

TEST_F(ThreadNames, TellTheWorkers) {
  suite.DeviceSearch();
  suite.DeviceUpgrade("127.0.0.1", "http://h/f");
  const std::pair<bool, Names> kRuns[] = {
      {true, {"zor-listen", "zor-mc", "zor-search", "zor-upgrade"}},
      {false, {"zor-bc", "zor-listen", "zor-mc", "zor-search", "zor-upgrade"}}};
  for (const auto& [version3, names] : kRuns) {
    startRun(version3, 60000);
    EXPECT_TRUE(waitUntil([&names = names] { return namesOfWorkers() == names; }, 1000)) << version3;
  }
}

TEST_F(ThreadEnd, LeavesAWaitAsItWas) {
  const UdpPeer upgrading(25000, "127.0.0.1");
  suite.DeviceUpgrade("127.0.0.1", "http://h/f");
  const std::pair<const char*, Body> kWaits[] = {
      {"queue", [] { ZorRunMainQueue(60000); }},
      {"handle", [] { s_threadUpgrade.waitUntilEmpty(); }},
      {"start", [this] { suite.DeviceUpgrade("127.0.0.1", "http://second"); }}};
  for (const auto& [name, wait] : kWaits) {
    Thread waiting(wait), another(wait);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    waiting.cancel();
    EXPECT_TRUE(waiting.endedEarly()) << name;
    another.cancel();
    EXPECT_TRUE(another.endedEarly()) << name << ": the first has left the lock as it was";
  }
  std::thread later([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ZorPostToMainQueue([] {});
  });
  EXPECT_EQ(ZorRunMainQueue(10000), 1);
  later.join();
  EXPECT_STREQ(s_ZorDevice.upgradeUrl, "http://h/f") << "the start has started nothing";
  system.clockAheadMs += 20000;
  s_threadUpgrade.waitUntilEmpty();
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -100);
}

TEST_F(ThreadEnd, InACallbackTakesThatCallbackOnly) {
  ZorMainQueueDescriptor();
  int ran = 0;
  for (const auto& [name, end] : kEnds) {
    ASSERT_TRUE(ZorPostToMainQueue(end));
    for (int i = 1; i < 1024; ++i) ASSERT_TRUE(ZorPostToMainQueue([&ran] { ++ran; }));
    EXPECT_TRUE(Thread([] { ZorRunMainQueue(0); }).endedEarly()) << name;
    EXPECT_TRUE(ZorPostToMainQueue([&ran] { ++ran; })) << name << ": the callback counts as delivered";
    EXPECT_FALSE(ZorPostToMainQueue([] {}));
    EXPECT_EQ(ZorRunMainQueue(0), 1024) << name;
    EXPECT_EQ(std::exchange(ran, 0), 1024);
  }
}

TEST_F(ThreadEnd, InALogSinkEndsWhatTheThreadDid) {
  for (const auto& [name, end] : kEnds) {
    ZorSetLogSink([end = end](const char*) { end(); });
    const std::int32_t taken = ZorUdpInit(kPort);
    EXPECT_TRUE(Thread([this] { startRun(true, 60000); }).endedEarly()) << name << ": listen smart3 failed";
    ZorUdpClose(taken);
    startRun(false, 60000);
    EXPECT_TRUE(isOver(s_threadSmartConfigMc)) << name << ": this worker logs the start";
    EXPECT_EQ(suite.SmartConfigReport().multicast.state, ZorWorkerState::stopped) << name;
    EXPECT_TRUE(system.waitForSends(system.sent().size() + 5, 2000)) << "the other sender continues";
    ZorSetLogSink([](const char*) {});
    startRun(true, 60000);
    EXPECT_TRUE(s_threadSmartConfigMc) << name << ": a start works as ever";
    endWorkers();
  }
}

TEST_F(ThreadEnd, InTheLastLineOfASenderEndsIt) {
  system.failSendsWhen([](const SentDatagram&) { return true; });
  ZorSetLogSink([](const char* line) {
    if (std::strstr(line, " times)") != nullptr) exitThread();
  });
  startRun(false, 60000);
  ASSERT_TRUE(system.waitForSends(8, 2000));
  suite.SmartConfigStop();
  EXPECT_TRUE(runIsOver());
}

TEST_F(ThreadEnd, WaitsUntilAStartThatFailedHasClosedItsDescriptors) {
  const std::int32_t taken = ZorUdpInit(kPort);
  for (const std::int32_t port : {kPort, kPort + 1}) {
    system.denyThreads = port != kPort;
    std::int32_t bound = 0;
    Thread starting([&] {
      pthread_cancel(pthread_self());
      bound = suite.SmartConfigOnlineListen(port);
    });
    EXPECT_FALSE(starting.endedEarly()) << port;
    EXPECT_EQ(bound, -1) << port;
    EXPECT_EQ(ZorUdpInit(0), taken + 1) << port << ": the lowest descriptor that is free";
    ZorUdpClose(taken + 1);
  }
  ZorUdpClose(taken);
}

TEST_F(ThreadEnd, InTheApplicationsLoopLeavesThePortFree) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  ZorSetMainQueue([](const std::function<void()>&) { exitThread(); });
  module.send("xcmd_notify:0:mac=M1,ver=1,cap=1", kPort);
  EXPECT_TRUE(isOver(s_threadSmartOnlineListen)) << "this worker hands the report over";
  ZorSetMainQueue(nullptr);
  EXPECT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  EXPECT_TRUE(isHeard("M2"));
}

TEST_F(ThreadEnd, WaitsUntilAPostIsComplete) {
  pollfd queue{ZorMainQueueDescriptor(), POLLIN, 0};
  int posted = 0, ran = 0;
  Thread posting([&] {
    pthread_cancel(pthread_self());
    for (int i = 0; i < 2; ++i) posted += ZorPostToMainQueue([] {});
    ran = ZorRunMainQueue(0);
    posted += ZorPostToMainQueue([] {});
    pthread_testcancel();
  });
  EXPECT_TRUE(posting.endedEarly());
  EXPECT_EQ(posted, 3);
  EXPECT_EQ(ran, 2);
  EXPECT_EQ(poll(&queue, 1, 0), 1) << "for the closure that is left";
  EXPECT_EQ(ZorRunMainQueue(0), 1);
}

}  // namespace
