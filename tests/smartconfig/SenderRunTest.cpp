#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ZOR/smartconfig/SendLog.h"
#include "tests/support/SuiteTest.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

double millisecondsBetween(steady_clock::time_point from, steady_clock::time_point to) {
  return std::chrono::duration<double, std::milli>(to - from).count();
}

class SenderRun : public SuiteTest {
 protected:
  /// The datagrams of one channel, in order.
  std::vector<SentDatagram> channel(bool multicast) const {
    std::vector<SentDatagram> sent = system.sent();
    std::erase_if(sent,
                  [&](const SentDatagram& d) { return (d.destination == "255.255.255.255") == multicast; });
    return sent;
  }

  static bool runAndListenerAreOver() { return runIsOver() && isOver(s_threadSmartOnlineListen); }

  bool logs(const std::string& line) const {
    return waitUntil([&] { return log.has(line); }, 2000);
  }
};

TEST_F(SenderRun, PutsBothChannelsOnTheAirUntilItsTimeOut) {
  s_ZorSmart5_McLoopRepeat = 1;
  s_ZorSmart5_BcLoopRepeat = 1;
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), kPort);
  const std::uint8_t append[] = {0x01, 0xB3, 0x61};
  suite.SmartConfigV5_Append(append, 3);
  suite.SmartConfigV5_Start("", "", 300);
  ASSERT_TRUE(runAndListenerAreOver()) << "the run's end takes the listener with it";
  EXPECT_TRUE(log.has("start smart v5, ssid=, pass=, append 3 byte"));
  // Cycles of 250 and 355 ms: two and one, because the time-out is tested between blocks.
  const std::vector<std::string> cycle = {"239.122.111.114", "239.111.19.41", "239.114.0.0", "239.111.1.179",
                                          "239.114.97.0"};
  std::vector<std::string> groups, expected(cycle);
  expected.insert(expected.end(), cycle.begin(), cycle.end());
  for (const SentDatagram& sent : channel(true)) groups.push_back(sent.destination);
  EXPECT_EQ(groups, expected);
  EXPECT_EQ(channel(false).size(), 3U + 2 * 7);
  EXPECT_EQ(suite.SmartConfigProgress(), 100) << "a multicast went out after the time-out";
}

TEST_F(SenderRun, KeepsItsPaceWithoutDrift) {
  constexpr double kGapMs = 15;
  s_ZorSmart5_BcLoopInterval = 0;  // Every gap is 15 ms.
  suite.SmartConfigV5_Start("drift", "", 60000);
  // Lateness that adds up shows between the most punctual of the first and of the last datagrams of each
  // stretch. A machine that stalls for a whole gap shifts the pace for good, so one calm stretch is enough.
  constexpr std::size_t kStretch = 60, kCompared = 20;
  const auto earliest = [&](const std::vector<SentDatagram>& sent, std::size_t first) {
    double best = std::numeric_limits<double>::max();
    for (std::size_t i = first; i < first + kCompared; ++i)
      best =
          std::min(best, millisecondsBetween(sent[0].when, sent[i].when) - kGapMs * static_cast<double>(i));
    return best;
  };
  double least = std::numeric_limits<double>::max();
  for (std::size_t first = 0; first < 5 * kStretch && least > 3; first += kStretch) {
    ASSERT_TRUE(waitUntil([&] { return channel(false).size() >= first + kStretch; }, 5000));
    const std::vector<SentDatagram> sent = channel(false);
    least = std::min(least, std::abs(earliest(sent, first + kStretch - kCompared) - earliest(sent, first)));
  }
  EXPECT_LT(least, 3) << "milliseconds off after 40 gaps, 0.5 %";
}

TEST_F(SenderRun, EndsWithinMillisecondsOfAStop) {
  const std::uint8_t slow[14] = {30, 255, 255, 255, 1, 1, 1, 30, 255, 255, 255, 1, 1, 1};
  suite.SmartConfigV5_SetProperty(slow, sizeof slow);
  std::vector<double> took;
  for (int round = 0; round < 20; ++round) {
    suite.SmartConfigV5_Start("stop", "now", 60000);
    std::this_thread::sleep_for(milliseconds(round));
    const auto before = steady_clock::now();
    suite.SmartConfigStop();
    s_threadSmartConfigMc.waitUntilEmpty();
    s_threadSmartConfigBc.waitUntilEmpty();
    took.push_back(millisecondsBetween(before, steady_clock::now()));
  }
  std::sort(took.begin(), took.end());
  EXPECT_LT(took[took.size() / 2], 2.0);
  EXPECT_LT(took.back(), 50.0) << "even on a busy machine far less than an interval";
}

TEST_F(SenderRun, SeesAChangedIntervalWhileItWaits) {
  const std::uint8_t quick[14] = {30, 5, 100, 0, 1, 1, 5, 0, 15, 100, 0, 1, 1, 5};
  for (const bool byAssignment : {true, false}) {
    s_ZorSmart5_BcLen = 0;
    s_ZorSmart5_McCharInterval = 60000;
    system.forgetSent();
    suite.SmartConfigV5_Start("wait", "", 60000);
    ASSERT_TRUE(system.waitForSends(1, 2000));
    if (byAssignment) s_ZorSmart5_McCharInterval = 5;
    if (!byAssignment) suite.SmartConfigV5_SetProperty(quick, sizeof quick);
    EXPECT_TRUE(system.waitForSends(3, 2000));
    suite.SmartConfigStop();
    ASSERT_TRUE(runIsOver());
  }
}

// Which frame gets which code is a matter of the schedules; here the code comes from a system without
// sockets.
TEST_F(SenderRun, NamesTheFrameForWhichNoSocketCouldBeOpenedAndLeavesTheListener) {
  const struct {
    std::int32_t code;
    std::string lastDestination;  // The frame before, whose send fails; empty: none.
    std::size_t lastLength;
  } kCases[] = {{-101, "", 0},
                {-102, "239.122.111.114", 30},
                {-110, "239.114.0.0", 31},
                {-201, "", 0},
                {-205, "255.255.255.255", 148}};
  suite.SmartConfigV5_MixV3Enable(1);
  for (const auto& [code, lastDestination, lastLength] : kCases) {
    SCOPED_TRACE(code);
    const bool multicast = code > -200;
    s_ZorSmart5_McLen = multicast ? 30 : 0;
    s_ZorSmart5_BcLen = multicast ? 0 : 30;
    ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
    system.denySockets = lastDestination.empty();
    system.failSendsWhen([&, to = lastDestination, length = lastLength](const SentDatagram& sent) {
      const bool last = sent.destination == to && sent.bytes.size() == length;
      if (last) system.denySockets = true;
      return last;
    });
    const auto warnings = [&] { return log.count(multicast ? "m)warning 1" : "b)warning 1"); };
    const auto before = warnings();
    suite.SmartConfigV5_Start("", "", 60000);
    ASSERT_TRUE(runIsOver());
    EXPECT_EQ(suite.SmartConfigProgress(), code);
    EXPECT_EQ(warnings(), before + (lastDestination.empty() ? 0 : 1));
    EXPECT_TRUE(s_threadSmartOnlineListen);
    system.denySockets = false;
  }
}

TEST_F(SenderRun, EndsAtOnceWithATimeOutThatHasPassed) {
  for (const bool version3 : {false, true}) {
    ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
    startRun(version3, version3 ? 0 : -1);
    ASSERT_TRUE(runAndListenerAreOver());
  }
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  s_ZorSmart5_McLen = 0;
  startRun(false, 0);
  ASSERT_TRUE(runIsOver());
  EXPECT_FALSE(isOver(s_threadSmartOnlineListen, 30)) << "the broadcast channel does not touch the listener";
  EXPECT_TRUE(system.sent().empty());
}

TEST_F(SenderRun, ReplacesTheRunBeforeAndKeepsItsListener) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  suite.SmartConfigV5_Start("first", "p", 60000);
  ASSERT_TRUE(system.waitForSends(2, 2000));
  ZorSuite().SmartConfigV5_Start("second", "p", 60000);
  EXPECT_TRUE(log.has("start smart v5, ssid=first, pass=p, append 0 byte"));
  ASSERT_TRUE(logs("start smart v5, ssid=second, pass=p, append 0 byte"));
  EXPECT_TRUE(s_threadSmartOnlineListen) << "the new run is still to hear of its module";
  EXPECT_TRUE(system.waitForSends(system.sent().size() + 5, 3000)) << "it needs no suite";

  suite.SmartConfigV3_Start("third", "p", 60000);
  EXPECT_TRUE(s_threadSmartConfigBc) << "version 3 replaces only the multicast sender";
  ASSERT_TRUE(logs("start smart v3, ssid=third, pass=p"));
  ASSERT_TRUE(waitUntil([&] { return channel(true).back().destination == "239.90.0.0"; }, 2000));
  EXPECT_TRUE(s_threadSmartOnlineListen);
  suite.SmartConfigStop();
  EXPECT_TRUE(runAndListenerAreOver());
}

TEST_F(SenderRun, EndsOnlyTheListenerThatItReliesOn) {
  const struct {
    bool before, after;         // A listener is opened before the run starts, and while it runs.
    std::int64_t clockAheadMs;  // The clock steps after the start.
    bool ends;
  } kCases[] = {{true, false, 0, true},
                {false, true, 0, true},
                {true, true, 0, false},        // Opened in the first one's place, for the next run.
                {false, true, 70000, false}};  // Opened when the run's time was up.
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.before << c.after << c.clockAheadMs);
    if (c.before) suite.SmartConfigOnlineListen(kPort);
    startRun(false, 60000);
    system.clockAheadMs += c.clockAheadMs;
    if (c.after) suite.SmartConfigOnlineListen(kPort);
    ASSERT_TRUE(s_threadSmartOnlineListen);
    if (c.clockAheadMs == 0) system.clockAheadMs += 70000;
    ASSERT_TRUE(runIsOver(5000));
    EXPECT_EQ(isOver(s_threadSmartOnlineListen, c.ends ? 2000 : 30), c.ends);
    EXPECT_EQ(suite.SmartConfigReport().listener.state,
              c.ends ? ZorWorkerState::timedOut : ZorWorkerState::running);
    endWorkers();
  }
}

TEST_F(SenderRun, ReportsWhatLeftWhatFailedAndHowItEnded) {
  const std::uint8_t quick[14] = {30, 2, 0, 0, 1, 1, 2, 30, 2, 0, 0, 1, 1, 2};
  suite.SmartConfigV5_SetProperty(quick, sizeof quick);
  suite.SmartConfigV5_Start("", "", 60000);
  ASSERT_TRUE(waitUntil([&] { return suite.SmartConfigReport().broadcast.blocks > 0; }, 5000));
  EXPECT_EQ(suite.SmartConfigReport().multicast.state, ZorWorkerState::running);
  suite.SmartConfigStop();
  ASSERT_TRUE(runIsOver());
  ZorRunReport report = suite.SmartConfigReport();
  for (const bool multicast : {true, false}) {
    const ZorSenderReport& sender = multicast ? report.multicast : report.broadcast;
    std::size_t bytes = 0;
    for (const SentDatagram& sent : channel(multicast)) bytes += sent.bytes.size();
    EXPECT_EQ(sender.datagrams, static_cast<std::int64_t>(channel(multicast).size()));
    EXPECT_EQ(sender.bytes, static_cast<std::int64_t>(bytes));
    EXPECT_EQ(sender.cycles / 2, sender.blocks);
    EXPECT_EQ(sender.failedSends, 0);
    EXPECT_EQ(sender.socketsOpened, 1);
    EXPECT_EQ(sender.state, ZorWorkerState::stopped);
  }
  EXPECT_EQ(report.listener.state, ZorWorkerState::idle);

  system.failSendsWhen([](const SentDatagram& sent) { return sent.destination != "255.255.255.255"; });
  suite.SmartConfigV5_Start("", "", 60000);
  ASSERT_TRUE(waitUntil([&] { return suite.SmartConfigReport().multicast.failedSends >= 50; }, 5000));
  suite.SmartConfigV3_Start("", "", 0);
  ASSERT_TRUE(isOver(s_threadSmartConfigMc));
  report = suite.SmartConfigReport();
  EXPECT_EQ(report.multicast.state, ZorWorkerState::timedOut);
  EXPECT_EQ(report.multicast.failedSends, 0) << "a start counts anew";
  EXPECT_EQ(report.broadcast.failedSends, 0);
  EXPECT_EQ(log.count("m)warning 1"), 1) << "the first failure is logged at once";
  EXPECT_LE(log.lines().size(), 9U) << "the others once a second, with their count";

  system.failSendsWhen([](const SentDatagram&) { return true; });
  suite.SmartConfigV5_Start("", "", 60000);
  ASSERT_TRUE(waitUntil([&] { return suite.SmartConfigReport().broadcast.failedSends >= 3; }, 5000));
  report = suite.SmartConfigReport();
  EXPECT_GE(report.broadcast.socketsOpened, report.broadcast.failedSends);
  EXPECT_EQ(report.broadcast.datagrams, 0);
  EXPECT_EQ(report.broadcast.error.number, EPERM);
  EXPECT_LE(report.broadcast.error.atMs, ZorGetUsec());
}

TEST_F(SenderRun, LogsAnotherErrorAtOnce) {
  zor::SendLog failures("m");
  for (const std::int32_t error : {101, 101, 101, 1, 1}) failures.add(error);
  failures.flush();
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"m)warning 101", "m)warning 101 (2 times)", "m)warning 1",
                                                   "m)warning 1"}));
}

TEST_F(SenderRun, OfVersion3NeedsItsPortAndOutlivesAMissingSocket) {
  const std::int32_t taken = ZorUdpInit(kPort);
  suite.SmartConfigV3_Start("s", "p", 1000);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"listen smart3 failed"});
  EXPECT_FALSE(s_threadSmartConfigMc);
  EXPECT_STREQ(s_ZorDevice.ssid, "");
  ZorUdpClose(taken);

  ASSERT_EQ(suite.SmartConfigOnlineListen(kPort), kPort);
  suite.SmartConfigV3_Start("s", "p", 60000);
  ASSERT_TRUE(system.waitForSends(4, 2000));
  system.failSendsWhen([&](const SentDatagram&) { return system.denySockets = true; });
  EXPECT_FALSE(isOver(s_threadSmartConfigMc, 50));
  EXPECT_GE(suite.SmartConfigProgress(), 0);
  system.failSendsWhen(nullptr);
  system.denySockets = false;
  EXPECT_TRUE(system.waitForSends(system.sent().size() + 2, 2000)) << "it sends again once there are sockets";
  suite.SmartConfigStop();
  EXPECT_TRUE(runAndListenerAreOver());
}

TEST_F(SenderRun, WithNothingToSendDoesNotSpin) {
  const std::uint8_t nothing[14] = {30, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 1, 1, 0};
  suite.SmartConfigV5_SetProperty(nothing, sizeof nothing);
  suite.SmartConfigV5_Start("", "", 60000);
  EXPECT_LT(processorMsWithin(300), 150);
  EXPECT_TRUE(s_threadSmartConfigMc);
  suite.SmartConfigStop();
  EXPECT_TRUE(runIsOver(1000));
}

}  // namespace
