#include <poll.h>

#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "ZOR/discovery/ModuleReporter.h"
#include "ZOR/platform/PostReport.h"
#include "tests/support/SuiteTest.h"

namespace {

using Strings = std::vector<std::string>;

/// UDP datagrams that the test's network has handed to their receivers so far.
long datagramsTaken() {
  std::ifstream file("/proc/net/snmp");
  const std::string counters(std::istreambuf_iterator<char>(file), {});
  const std::string line = "\nUdp: ";
  const std::size_t names = counters.find(line), values = counters.find(line, names + 1);
  return std::stol(counters.substr(values + line.size()));
}

class Listen : public SuiteTest {
 protected:
  /// Sends the lines, then one that is surely new, and returns what was heard up to that.
  Strings hear(const Strings& lines) {
    for (const std::string& line : lines) module.send(line, kPort);
    const std::string number = std::to_string(last++);
    module.send("xcmd_notify:0:mac=LAST,ver=,cap=" + number, kPort);
    Strings& heard = delegate->announced;
    const std::string end = "LAST|127.0.0.1||" + number + "|";
    while (heard.empty() || heard.back() != end) {
      if (ZorRunMainQueue(patience(2000)) == 0) return {"silence"};
    }
    heard.pop_back();
    return std::exchange(heard, {});
  }

  /// Sends a line and waits until the listener is done with it: it has taken the datagram after it.
  bool isJudged(const std::string& line) {
    const long before = datagramsTaken();
    for (const std::string& datagram : {line, std::string("garbage")}) module.send(datagram, kPort);
    return waitUntil([&] { return datagramsTaken() == before + 2; }, 2000);
  }

  int last = 0;
};

TEST_F(Listen, BindsThePortOrTheNextFreeOne) {
  const std::pair<std::int32_t, std::int32_t> kAskedAndBound[] = {
      {0, 25010},     {-1, 25010}, {65535, 25010}, {70000, 25010},
      {65534, 65534}, {1, 1},      {25010, 25010}, {25010, 25010}};
  for (const auto& [asked, bound] : kAskedAndBound) {
    EXPECT_EQ(suite.SmartConfigOnlineListen(asked), bound);
    EXPECT_TRUE(s_threadSmartOnlineListen);
    EXPECT_EQ(ZorUdpInit(bound), kZorBindFailed) << "bound at once";
  }
  endWorkers();
  const std::int32_t taken = ZorUdpInit(25010);
  ASSERT_GE(taken, 0) << "a listener that ended has closed its socket";
  EXPECT_EQ(suite.SmartConfigOnlineListen(25010), -1);
  EXPECT_FALSE(s_threadSmartOnlineListen);
  EXPECT_EQ(s_ZorDevice.listenSocket, kZorBindFailed);
  EXPECT_EQ(suite.SmartConfigOnlineListen(0), 25011);
  ZorUdpClose(taken);
}

TEST_F(Listen, ReportsEachModuleOnce) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=2,x=9,y=8\r\n"}), Strings{"A|127.0.0.1|1|2|x=9,y=8"});
  EXPECT_EQ(
      hear({"xcmd_notify:2:mac=A,ver=1,cap=2,x=9,y=8\r\n", "xcmd_notify:3:mac=A,ver=1,cap=2,x=new\r\n"}),
      Strings{})
      << "a repeat, and one that differs only after cap";
  EXPECT_EQ(hear({"xcmd_notify:2:mac=A,ver=2,cap=2\r\n"}), Strings{"A|127.0.0.1|2|2|"});
  EXPECT_EQ(hear({"XCMD_Notify:4:cap=3,mac=B,ver=5,\r\n"}), Strings{"B|127.0.0.1|5|3|mac=B,ver=5,"});
  const UdpPeer elsewhere(0, "127.0.0.2");
  elsewhere.send("xcmd_notify:1:mac=A,ver=1,cap=2\r\n", kPort);
  EXPECT_EQ(hear({}), Strings{"A|127.0.0.2|1|2|"});
  EXPECT_NE(delegate->thread, std::thread::id());
  EXPECT_EQ(delegate->thread, std::this_thread::get_id());

  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=2"}), Strings{"A|127.0.0.1|1|2|"}) << "a new listener";
}

TEST_F(Listen, RemembersTheLatestHundredModules) {
  const auto slot = std::make_shared<zor::DelegateSlot>();
  slot->set(delegate);
  zor::LineCounters counters;
  zor::ModuleReporter reporter(zor::kNotificationTag, slot, &ZorSuiteDelegate::onSmartFound, counters);
  const auto isReported = [&](int id) {
    std::string line = "xcmd_notify:1:mac=" + std::to_string(id) + ",ver=1,cap=1";
    reporter.take(line.data(), static_cast<std::int32_t>(line.size()), "10.0.0.1");
    return ZorRunMainQueue(0) == 1;
  };
  for (int id = 1; id <= 100; ++id) EXPECT_TRUE(isReported(id)) << id;
  EXPECT_FALSE(isReported(1));
  EXPECT_FALSE(isReported(100));
  EXPECT_TRUE(isReported(101)) << "takes the place of module 1";
  EXPECT_TRUE(isReported(1)) << "forgotten, and takes the place of module 2";
  EXPECT_FALSE(isReported(3));
  EXPECT_FALSE(isReported(101));
  EXPECT_TRUE(isReported(2));
}

TEST_F(Listen, KeepsWhatALineDoesNotCarry) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A"}), Strings{"A|127.0.0.1|||"});
  EXPECT_EQ(hear({"xcmd_notify:1:mac=C,VER=9,MAC=D"}), Strings{"C|127.0.0.1||0|"}) << "keys keep their case";
  EXPECT_EQ(hear({"xcmd_notify:1:ver=7"}), Strings{"LAST|127.0.0.1|7|1|"});
  EXPECT_EQ(hear({"xcmd_notify:1:cap=8,flag,mac=E,ver=a=b"}),
            Strings{"LAST|127.0.0.1||8|flag,mac=E,ver=a=b"});
}

TEST_F(Listen, DropsWhatIsNoNotification) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  EXPECT_EQ(hear({"", "xcmd_notify", "xcmd_rsp:1:mac=A,ver=1,cap=2\r\n", "garbage", std::string(3000, 'x'),
                  std::string("\0xcmd_notify:1:mac=A", 20)}),
            Strings{});
}

TEST_F(Listen, CutsValuesAtTheirFields) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  const auto text = [](std::size_t length, char c) { return std::string(length, c); };
  EXPECT_EQ(
      hear({"xcmd_notify:1:mac=" + text(30, 'm') + ",ver=" + text(20, 'v') + ",cap=" + text(100, 'c') + "," +
            text(600, 'e') + "=1"}),
      Strings{text(19, 'm') + "|127.0.0.1|" + text(19, 'v') + "|" + text(39, 'c') + "|" + text(399, 'e')});
  EXPECT_EQ(hear({"xcmd_notify:" + text(1500, '=')}).size(), 0U) << "a line of nothing but '='";
  EXPECT_EQ(hear({"xcmd_notify:1:" + text(600, 'k') + "=" + text(600, 'v') + ",mac=Z"}).size(), 0U);
}

TEST_F(Listen, DeliversToTheDelegateOfTheMomentAndRecordsWithoutOne) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  suite.setDelegate(nullptr);
  ASSERT_TRUE(isJudged("xcmd_notify:1:mac=A,ver=1,cap=1"));
  suite.setDelegate(delegate);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=1"}), Strings{})
      << "recorded although there was no delegate";

  module.send("xcmd_notify:1:mac=B,ver=1,cap=1", kPort);
  pollfd queue{ZorMainQueueDescriptor(), POLLIN, 0};
  ASSERT_EQ(poll(&queue, 1, 2000), 1);
  const auto next = std::make_shared<RecordingDelegate>();
  suite.setDelegate(next);
  EXPECT_EQ(ZorRunMainQueue(0), 1);
  EXPECT_EQ(next->announced, Strings{"B|127.0.0.1|1|1|"});
  EXPECT_TRUE(delegate->announced.empty());
}

TEST_F(Listen, OutlivesItsSuiteWithTheDelegate) {
  std::weak_ptr<RecordingDelegate> weak;
  {
    ZorSuite temporary;
    const auto mortal = std::make_shared<RecordingDelegate>();
    weak = mortal;
    temporary.setDelegate(mortal);
    ASSERT_EQ(temporary.SmartConfigOnlineListen(0), kPort);
  }
  delegate = weak.lock();
  ASSERT_NE(delegate, nullptr);
  EXPECT_TRUE(isHeard("A"));
}

TEST_F(Listen, ReportsAgainWhatFoundTheQueueFull) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  for (int count = 0; count < 1024; ++count) ASSERT_TRUE(zor::postReport([] {}));
  ASSERT_TRUE(isJudged("xcmd_notify:1:mac=A,ver=1,cap=1"));
  EXPECT_EQ(ZorRunMainQueue(0), 1024);
  EXPECT_TRUE(delegate->announced.empty());
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=1"}), Strings{"A|127.0.0.1|1|1|"});
}

TEST_F(Listen, ComesBackOnItsPortWhenTheSystemTakesItsSocketAway) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(25012), 25012);
  EXPECT_EQ(suite.SmartConfigReport().listener.port, 25012);
  system.failReceives(1, ENOTCONN);
  module.send("lost with the socket", 25012);
  ASSERT_TRUE(waitUntil([&] { return suite.SmartConfigReport().listener.socketsOpened == 2; }, 2000));
  EXPECT_EQ(suite.SmartConfigReport().listener.error.number, ENOTCONN);
  module.send("xcmd_notify:0:mac=A,ver=1,cap=1", 25012);
  EXPECT_TRUE(drainUntil(delegate->announced, 1));

  system.failReceives(1000, ENOTCONN);
  EXPECT_LT(processorMsWithin(200), 100) << "an error that stays does not make it spin";
  system.receivesToFail = 0;
  EXPECT_TRUE(s_threadSmartOnlineListen);
  system.denySockets = true;
  system.failReceives(1, ENOTCONN);
  module.send("lost with the socket", 25012);
  EXPECT_TRUE(isOver(s_threadSmartOnlineListen)) << "with no socket it ends";
  EXPECT_EQ(suite.SmartConfigReport().listener.state, ZorWorkerState::noSocket);
  EXPECT_EQ(suite.SmartConfigReport().listener.error.number, EMFILE);
}

TEST_F(Listen, ReportsWhatItHeardAndRefused) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  hear({"xcmd_notify:1:mac=A,ver=1,cap=1", "xcmd_notify:1:mac=A,ver=1,cap=1", "garbage", "",
        "xcmd_rsp:1:mac=B"});
  suite.setDelegate(nullptr);
  ASSERT_TRUE(isJudged("xcmd_notify:1:mac=C,ver=1,cap=1"));
  ASSERT_TRUE(waitUntil([&] { return suite.SmartConfigReport().listener.received.datagrams == 8; }, 2000));
  const ZorListenerReport report = suite.SmartConfigReport().listener;
  EXPECT_EQ(report.state, ZorWorkerState::running);
  EXPECT_EQ(report.port, kPort);
  EXPECT_EQ(report.received.lines, 4);
  EXPECT_EQ(report.received.reported, 2) << "A, and the line that ends what is heard";
  EXPECT_EQ(report.received.repeats, 1);
  EXPECT_EQ(report.received.withoutDelegate, 1);
  EXPECT_EQ(report.received.otherContent, 3);
  EXPECT_EQ(report.received.empty, 1);

  suite.SmartConfigStop();
  ASSERT_TRUE(isOver(s_threadSmartOnlineListen, 200));
  EXPECT_EQ(suite.SmartConfigReport().listener.state, ZorWorkerState::stopped);
}

}  // namespace
