#include <string>
#include <vector>

#include "tests/support/SuiteTest.h"

namespace {

using Strings = std::vector<std::string>;

class Search : public SuiteTest {
 protected:
  // As in an application that runs for a while: the first request is due at once.
  Search() { system.clockAheadMs = 100000; }

  void start(std::int32_t intervalMs, std::int32_t count) {
    suite.DeviceSearchSetProperty(intervalMs, count);
    suite.DeviceSearch();
  }
  static bool isSearchOver() { return isOver(s_threadDeviceSearch, 3000); }

  /// Makes the application's network answer `count` requests, each with `answer`; returns them.
  Strings answerRequests(int count, const std::string& answer) {
    Strings lines;
    for (int i = 0; i < count; ++i) {
      const UdpPeer::Datagram request = searched.receive();
      lines.push_back(request.text);
      if (!request.text.empty()) searched.answer(request, answer);
    }
    return lines;
  }

  UdpPeer searched{25000};
};

TEST_F(Search, SendsNumberedRequestsAtTheirInterval) {
  start(30, 4);
  ASSERT_TRUE(isSearchOver());
  const std::vector<SentDatagram> sent = system.sent();
  ASSERT_EQ(sent.size(), 4U);
  for (std::size_t i = 0; i < sent.size(); ++i) {
    EXPECT_EQ(sent[i].bytes, "xcmd_req:" + std::to_string(i) + ":cmd=info,\r\n");
    EXPECT_EQ(sent[i].destination, "255.255.255.255");
    EXPECT_EQ(sent[i].port, 25000);
    EXPECT_EQ(sent[i].localPort, sent[0].localPort);
    if (i > 0) {
      EXPECT_GE(sent[i].when - sent[i - 1].when, std::chrono::milliseconds(30));
    }
  }
  EXPECT_EQ(s_ZorSearchInterval, 30);
}

TEST_F(Search, ReportsEachModuleOncePerSearch) {
  suite.DeviceSearchSetProperty(20, 5);
  for (int search = 0; search < 2; ++search) {
    suite.DeviceSearch();
    EXPECT_EQ(answerRequests(4, "XCMD_RSP:77:mac=A,ver=1,cap=2,name=x\r\n").back(),
              "xcmd_req:3:cmd=info,\r\n");
    ASSERT_TRUE(isSearchOver());
    searched.receive(0);
    ZorRunMainQueue(0);
  }
  EXPECT_EQ(delegate->searched, Strings(2, "A|10.77.0.1|1|2|name=x"));
  EXPECT_EQ(delegate->thread, std::this_thread::get_id());
  EXPECT_TRUE(delegate->announced.empty());

  suite.DeviceSearch();
  for (const char* answer : {"xcmd_rsp:1:mac=A,ver=1,cap=2", "xcmd_rsp:1:mac=A,ver=2,cap=2",
                             "xcmd_rsp:1:MAC=Z,ver=2,cap=2", "xcmd_notify:1:mac=B,ver=2,cap=2"}) {
    answerRequests(1, answer);
  }
  ASSERT_TRUE(isSearchOver());
  ZorRunMainQueue(0);
  EXPECT_EQ(delegate->searched.size(), 4U) << "another version is another report, capital keys are none";
  const ZorLineReport received = suite.DeviceSearchReport().received;
  EXPECT_EQ(received.lines, 3);
  EXPECT_EQ(received.reported, 2);
  EXPECT_EQ(received.repeats, 1);
  EXPECT_EQ(received.otherContent, 1);
}

TEST_F(Search, SendsNothingWhenThereIsNothingToSend) {
  for (const std::int32_t count : {0, -3}) {
    start(100, count);
    ASSERT_TRUE(isSearchOver());
    EXPECT_TRUE(system.sent().empty());
  }
}

TEST_F(Search, EndsRightAfterTheReceiveThatFollowsItsLastRequest) {
  start(5000, 1);
  ASSERT_TRUE(isOver(s_threadDeviceSearch, 200));
  EXPECT_EQ(system.sent().size(), 1U);
  searched.answer(searched.receive(), "xcmd_rsp:0:mac=LATE,ver=1,cap=1");
  EXPECT_EQ(ZorRunMainQueue(50), 0);
}

TEST_F(Search, IsNotCutShortByATunable) {
  system.failSendsWhen([](const SentDatagram&) {
    s_ZorSmart5_McLen = s_ZorSmart5_McLen + 1;  // Wakes the search before it receives.
    return false;
  });
  for (const std::int32_t intervalMs : {5000, 0}) {
    start(intervalMs, 1);
    ASSERT_TRUE(isSearchOver());
    const auto ended = std::chrono::steady_clock::now();
    ASSERT_EQ(system.sent().size(), 1U);
    EXPECT_GE(ended - system.sent()[0].when, std::chrono::milliseconds(10)) << intervalMs;
    system.forgetSent();
  }
}

TEST_F(Search, FollowsItsTunablesWhileItRuns) {
  start(60000, 50);
  ASSERT_TRUE(system.waitForSends(1, 1000));
  suite.DeviceSearchSetProperty(-1, 50);
  ASSERT_TRUE(system.waitForSends(8, 1000)) << "a negative interval asks on every pass";
  suite.DeviceSearchSetProperty(-1, 3);
  EXPECT_TRUE(isSearchOver()) << "a maximum below what was sent ends it";
}

TEST_F(Search, IsReplacedByANewOneAndByNothingElse) {
  start(60000, 50);
  ASSERT_TRUE(system.waitForSends(1, 1000));
  suite.SmartConfigStop();
  EXPECT_FALSE(isOver(s_threadDeviceSearch, 40));
  ZorSuite().DeviceSearch();
  ASSERT_TRUE(system.waitForSends(2, 1000));
  EXPECT_EQ(system.sent()[1].bytes, "xcmd_req:0:cmd=info,\r\n");
  EXPECT_NE(system.sent()[1].localPort, system.sent()[0].localPort);
}

TEST_F(Search, GoesOnWithAnotherSocketWhenTheSystemTakesItsOwn) {
  system.failReceives(1, ENOTCONN);
  start(20, 5);
  answerRequests(1, "lost with the socket");
  ASSERT_TRUE(isSearchOver());
  EXPECT_EQ(suite.DeviceSearchReport().requestsSent, 5);
  EXPECT_EQ(suite.DeviceSearchReport().socketsOpened, 2);
  EXPECT_EQ(suite.DeviceSearchReport().error.number, ENOTCONN);
}

TEST_F(Search, CountsRequestsThatCouldNotBeSent) {
  system.failSendsWhen([](const SentDatagram&) { return true; });
  start(5, 3);
  ASSERT_TRUE(isSearchOver());
  EXPECT_EQ(log.lines(), Strings(3, "b)warning 1"));
  EXPECT_EQ(suite.DeviceSearchReport().state, ZorWorkerState::finished);
  EXPECT_EQ(suite.DeviceSearchReport().requestsSent, 0);
  EXPECT_EQ(suite.DeviceSearchReport().requestsFailed, 3);
  EXPECT_EQ(suite.DeviceSearchReport().error.number, EPERM);
  system.denySockets = true;
  suite.DeviceSearch();
  EXPECT_TRUE(isSearchOver());
  EXPECT_EQ(suite.DeviceSearchReport().requestsFailed, 3);
  EXPECT_EQ(suite.DeviceSearchReport().error.number, EMFILE);
}

TEST_F(Search, DelaysTheFirstRequestOfAClockThatStandsAtZero) {
  system.clockAheadMs -= ZorGetUsec();
  const auto before = std::chrono::steady_clock::now();
  start(80, 1);
  ASSERT_TRUE(system.waitForSends(1, 2000));
  EXPECT_GE(system.sent()[0].when - before, std::chrono::milliseconds(80));
  EXPECT_TRUE(isSearchOver());
}

}  // namespace
