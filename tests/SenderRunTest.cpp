#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wait.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool handlesEmpty() {
  return !s_threadSmartConfigMc && !s_threadSmartConfigBc && !s_threadSmartOnlineListen;
}

double millisecondsBetween(steady_clock::time_point from, steady_clock::time_point to) {
  return std::chrono::duration<double, std::milli>(to - from).count();
}

/// The datagrams of one channel, in order.
std::vector<SentDatagram> channel(const FakeSystem& system, bool multicast) {
  std::vector<SentDatagram> sent = system.sent();
  std::erase_if(sent,
                [&](const SentDatagram& d) { return (d.destination == "255.255.255.255") == multicast; });
  return sent;
}

TEST(SenderRun, PutsBothChannelsOnTheAirUntilItsTimeOut) {
  FakeSystem system;
  const LogCapture log;
  s_ZorSmart5_McLoopRepeat = 1;
  s_ZorSmart5_BcLoopRepeat = 1;
  ZorSuite suite;
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), 25010);
  const std::uint8_t append[] = {0x01, 0xB3, 0x61};
  suite.SmartConfigV5_Append(append, 3);
  suite.SmartConfigV5_Start("", "", 300);
  ASSERT_TRUE(waitUntil(handlesEmpty, 3000)) << "the run's end takes the listener with it";
  EXPECT_TRUE(log.has("start smart v5, ssid=, pass=, append 3 byte"));
  // Cycles of 250 and 355 ms: two and one, because the time-out is tested between blocks.
  const std::vector<std::string> cycle = {"239.122.111.114", "239.111.19.41", "239.114.0.0", "239.111.1.179",
                                          "239.114.97.0"};
  std::vector<std::string> groups, expected(cycle);
  expected.insert(expected.end(), cycle.begin(), cycle.end());
  for (const SentDatagram& sent : channel(system, true)) groups.push_back(sent.destination);
  EXPECT_EQ(groups, expected);
  EXPECT_EQ(channel(system, false).size(), 3U + 2 * 7);
  EXPECT_EQ(suite.SmartConfigProgress(), 100) << "a multicast went out behind the time-out";
}

TEST(SenderRun, KeepsItsPaceWithoutDrift) {
  FakeSystem system;
  ZorSuite suite;
  s_ZorSmart5_BcLoopInterval = 0;  // Every gap is 15 ms.
  suite.SmartConfigV5_Start("drift", "", 60000);
  ASSERT_TRUE(waitUntil([&] { return channel(system, false).size() >= 60; }, 5000));
  suite.SmartConfigStop();
  const std::vector<SentDatagram> sent = channel(system, false);
  const double lasted = millisecondsBetween(sent.front().when, sent.back().when);
  const double nominal = 15.0 * static_cast<double>(sent.size() - 1);
  EXPECT_NEAR(lasted, nominal, 12) << "lateness of single wake-ups must not add up";
}

TEST(SenderRun, EndsWithinMillisecondsOfAStop) {
  const std::uint8_t slow[14] = {30, 255, 255, 255, 1, 1, 1, 30, 255, 255, 255, 1, 1, 1};
  ZorSuite suite;
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

TEST(SenderRun, SeesAChangedIntervalWhileItWaits) {
  for (const bool byAssignment : {true, false}) {
    FakeSystem system;
    ZorSuite suite;
    s_ZorSmart5_BcLen = 0;
    s_ZorSmart5_McCharInterval = 60000;
    suite.SmartConfigV5_Start("wait", "", 60000);
    ASSERT_TRUE(system.waitForSends(1, 2000));
    const std::uint8_t quick[14] = {30, 5, 100, 0, 1, 1, 5, 0, 15, 100, 0, 1, 1, 5};
    if (byAssignment) {
      s_ZorSmart5_McCharInterval = 5;
    } else {
      suite.SmartConfigV5_SetProperty(quick, sizeof quick);
    }
    EXPECT_TRUE(system.waitForSends(3, 2000));
    suite.SmartConfigStop();
    s_threadSmartConfigMc.waitUntilEmpty();
  }
}

TEST(SenderRun, NamesTheFrameForWhichNoSocketCouldBeOpened) {
  struct Case {
    std::int32_t code;
    const char* lastDestination;  // The frame before, whose send fails; null: none.
    std::size_t lastLength;
  };
  const char* const everyHost = "255.255.255.255";
  const Case cases[] = {{-101, nullptr, 0},        {-102, "239.122.111.114", 30},
                        {-110, "239.114.0.0", 31}, {-111, "239.90.0.0", 30},
                        {-201, nullptr, 0},        {-202, everyHost, 30},
                        {-203, everyHost, 388},    {-204, everyHost, 31},
                        {-205, everyHost, 148}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.code);
    FakeSystem system;
    const LogCapture log;
    ZorSuite suite;
    const bool multicast = c.code > -200;
    s_ZorSmart5_McLen = multicast ? 30 : 0;
    s_ZorSmart5_BcLen = multicast ? 0 : 30;
    suite.SmartConfigV5_MixV3Enable(1);
    system.denySockets = c.lastDestination == nullptr;
    int markers = 0;
    system.failSendsWhen([&](const SentDatagram& sent) {
      const bool last = c.lastDestination != nullptr && sent.destination == c.lastDestination &&
                        sent.bytes.size() == c.lastLength && (c.code != -111 || ++markers == 3);
      if (last) system.denySockets = true;
      return last;
    });
    suite.SmartConfigV5_Start("", "", 60000);
    ASSERT_TRUE(waitUntil(handlesEmpty, 3000));
    EXPECT_EQ(suite.SmartConfigProgress(), c.code);
    EXPECT_EQ(log.has(multicast ? "m)warning 1" : "b)warning 1"), c.lastDestination != nullptr);
  }
}

TEST(SenderRun, LeavesTheOtherChannelAndTheListenerAloneWhenASocketIsMissing) {
  FakeSystem system;
  ZorSuite suite;
  ASSERT_EQ(suite.SmartConfigOnlineListen(25010), 25010);
  system.denySockets = true;
  suite.SmartConfigV5_Start("", "", 60000);
  ASSERT_TRUE(waitUntil([] { return !s_threadSmartConfigMc && !s_threadSmartConfigBc; }, 2000));
  EXPECT_LT(suite.SmartConfigProgress(), -100);
  EXPECT_TRUE(s_threadSmartOnlineListen);
}

TEST(SenderRun, GoesOnOnANewSocketAfterAFailedSend) {
  FakeSystem system;
  const LogCapture log;
  int count = 0;
  system.failSendsWhen([&count](const SentDatagram&) { return ++count % 3 == 0; });
  ZorSuite suite;
  s_ZorSmart5_BcLen = 0;
  s_ZorSmart5_McCharInterval = 2;
  suite.SmartConfigV5_Start("", "", 60000);
  ASSERT_TRUE(system.waitForSends(6, 2000));
  EXPECT_TRUE(s_threadSmartConfigMc);
  EXPECT_EQ(suite.SmartConfigProgress(), 0);
  suite.SmartConfigStop();
  s_threadSmartConfigMc.waitUntilEmpty();
  const std::vector<SentDatagram> sent = system.sent();
  EXPECT_EQ(sent[0].localPort, sent[2].localPort);
  EXPECT_NE(sent[2].localPort, sent[3].localPort);
  EXPECT_TRUE(log.has("m)warning 1"));
}

TEST(SenderRun, EndsAtOnceWithATimeOutThatHasPassed) {
  for (const bool version3 : {false, true}) {
    FakeSystem system;
    ZorSuite suite;
    ASSERT_EQ(suite.SmartConfigOnlineListen(25010), 25010);
    if (version3) suite.SmartConfigV3_Start("s", "p", 0);
    if (!version3) suite.SmartConfigV5_Start("s", "p", -1);
    ASSERT_TRUE(waitUntil(handlesEmpty, 2000));
    EXPECT_TRUE(system.sent().empty());
  }
}

TEST(SenderRun, OfTheBroadcastChannelLeavesTheListenerAlone) {
  s_ZorSmart5_McLen = 0;
  ZorSuite suite;
  ASSERT_EQ(suite.SmartConfigOnlineListen(25010), 25010);
  suite.SmartConfigV5_Start("", "", 0);
  ASSERT_TRUE(waitUntil([] { return !s_threadSmartConfigBc; }, 2000));
  std::this_thread::sleep_for(milliseconds(30));
  EXPECT_TRUE(s_threadSmartOnlineListen);
}

TEST(SenderRun, ReplacesTheRunBeforeAndKeepsItsListener) {
  FakeSystem system;
  const LogCapture log;
  ZorSuite suite, other;
  ASSERT_EQ(suite.SmartConfigOnlineListen(25010), 25010);
  suite.SmartConfigV5_Start("first", "p", 60000);
  ASSERT_TRUE(system.waitForSends(2, 2000));
  other.SmartConfigV5_Start("second", "p", 60000);
  EXPECT_TRUE(log.has("start smart v5, ssid=first, pass=p, append 0 byte"));
  ASSERT_TRUE(waitUntil([&] { return log.has("start smart v5, ssid=second, pass=p, append 0 byte"); }, 2000));
  EXPECT_TRUE(s_threadSmartOnlineListen) << "the new run is still to hear of its module";

  other.SmartConfigV3_Start("third", "p", 60000);
  EXPECT_TRUE(s_threadSmartConfigBc) << "version 3 replaces the multicast sender alone";
  ASSERT_TRUE(waitUntil([&] { return log.has("start smart v3, ssid=third, pass=p"); }, 2000));
  ASSERT_TRUE(waitUntil([&] { return channel(system, true).back().destination == "239.90.0.0"; }, 2000));
  EXPECT_TRUE(s_threadSmartOnlineListen);
  suite.SmartConfigStop();
  EXPECT_TRUE(waitUntil(handlesEmpty, 2000));
}

TEST(SenderRun, OfVersion3NeedsItsPortAndOutlivesAMissingSocket) {
  FakeSystem system;
  const LogCapture log;
  ZorSuite suite;
  const std::int32_t taken = ZorUdpInit(25010);
  suite.SmartConfigV3_Start("s", "p", 1000);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"listen smart3 failed"});
  EXPECT_FALSE(s_threadSmartConfigMc);
  EXPECT_STREQ(s_ZorDevice.ssid, "");
  ZorUdpClose(taken);

  ASSERT_EQ(suite.SmartConfigOnlineListen(25010), 25010);
  suite.SmartConfigV3_Start("s", "p", 60000);
  ASSERT_TRUE(system.waitForSends(4, 2000));
  system.failSendsWhen([&](const SentDatagram&) { return system.denySockets = true; });
  std::this_thread::sleep_for(milliseconds(50));
  EXPECT_TRUE(s_threadSmartConfigMc);
  EXPECT_GE(suite.SmartConfigProgress(), 0);
  system.failSendsWhen(nullptr);
  system.denySockets = false;
  const std::size_t before = system.sent().size();
  EXPECT_TRUE(system.waitForSends(before + 2, 2000)) << "it sends again once there are sockets";
  suite.SmartConfigStop();
  EXPECT_TRUE(waitUntil(handlesEmpty, 2000));
}

TEST(SenderRun, SurvivesTheSuiteThatStartedIt) {
  FakeSystem system;
  ZorSuite().SmartConfigV5_Start("gone", "", 60000);
  const std::size_t before = system.sent().size();
  EXPECT_TRUE(system.waitForSends(before + 5, 3000));
  ZorSuite().SmartConfigStop();
  EXPECT_TRUE(waitUntil(handlesEmpty, 2000));
}

TEST(SenderRun, WithNothingToSendDoesNotSpin) {
  const std::uint8_t nothing[14] = {30, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 1, 1, 0};
  ZorSuite suite;
  suite.SmartConfigV5_SetProperty(nothing, sizeof nothing);
  suite.SmartConfigV5_Start("", "", 60000);
  timespec before{}, after{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
  std::this_thread::sleep_for(milliseconds(300));
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
  const double usedMs = static_cast<double>(after.tv_sec - before.tv_sec) * 1e3 +
                        static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e6;
  EXPECT_LT(usedMs, 150);
  EXPECT_TRUE(s_threadSmartConfigMc);
  suite.SmartConfigStop();
  EXPECT_TRUE(waitUntil(handlesEmpty, 1000));
}

}  // namespace
