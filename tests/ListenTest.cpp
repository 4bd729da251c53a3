#include <gtest/gtest.h>

#include <poll.h>

#include <ctime>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/Module.h"
#include "tests/support/RecordingDelegate.h"
#include "tests/support/Wait.h"

namespace {

using Strings = std::vector<std::string>;

class Listen : public testing::Test {
 protected:
  Listen() { suite.setDelegate(delegate); }
  ~Listen() override {
    suite.SmartConfigStop();
    s_threadSmartOnlineListen.waitUntilEmpty();
  }

  /// Sends the lines, then one that is surely new, and returns what was heard up to that.
  Strings hear(const Strings& lines) {
    for (const std::string& line : lines) module.send(line, port);
    const std::string number = std::to_string(last++);
    module.send("xcmd_notify:0:mac=LAST,ver=,cap=" + number, port);
    waitUntil(
        [&] {
          ZorRunMainQueue(5);
          return !delegate->announced.empty() &&
                 delegate->announced.back() == "LAST|127.0.0.1||" + number + "|";
        },
        2000);
    Strings heard = std::exchange(delegate->announced, {});
    if (!heard.empty()) heard.pop_back();
    return heard;
  }

  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  ZorSuite suite;
  Module module{0, "127.0.0.1"};
  std::int32_t port = 25010;
  int last = 0;
};

TEST_F(Listen, BindsThePortOrTheNextFreeOne) {
  struct Case {
    std::int32_t asked, bound;
  };
  for (const Case& c : {Case{0, 25010}, Case{-1, 25010}, Case{65535, 25010}, Case{70000, 25010},
                        Case{65534, 65534}, Case{1, 1}, Case{25010, 25010}, Case{25010, 25010}}) {
    EXPECT_EQ(suite.SmartConfigOnlineListen(c.asked), c.bound);
    EXPECT_TRUE(s_threadSmartOnlineListen);
    EXPECT_EQ(ZorUdpInit(c.bound), kZorBindFailed) << "bound at once";
  }
  suite.SmartConfigStop();
  s_threadSmartOnlineListen.waitUntilEmpty();
  const std::int32_t taken = ZorUdpInit(25010);
  ASSERT_GE(taken, 0) << "a listener that ended has closed its socket";
  EXPECT_EQ(suite.SmartConfigOnlineListen(25010), -1);
  EXPECT_FALSE(s_threadSmartOnlineListen);
  EXPECT_EQ(s_ZorDevice.listenSocket, kZorBindFailed);
  EXPECT_EQ(suite.SmartConfigOnlineListen(0), 25011);
  ZorUdpClose(taken);
}

TEST_F(Listen, GivesUpWhenNoSocketCanBeCreated) {
  FakeSystem system;
  system.denySockets = true;
  EXPECT_EQ(suite.SmartConfigOnlineListen(0), -1);
  EXPECT_EQ(suite.SmartConfigOnlineListen(25010), -1);
  EXPECT_FALSE(s_threadSmartOnlineListen);
}

TEST_F(Listen, ReportsEachModuleOnce) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=2,x=9,y=8\r\n"}), Strings{"A|127.0.0.1|1|2|x=9,y=8"});
  EXPECT_EQ(
      hear({"xcmd_notify:2:mac=A,ver=1,cap=2,x=9,y=8\r\n", "xcmd_notify:3:mac=A,ver=1,cap=2,x=new\r\n"}),
      Strings{})
      << "a repeat, and one that differs behind cap alone";
  EXPECT_EQ(hear({"xcmd_notify:2:mac=A,ver=2,cap=2\r\n"}), Strings{"A|127.0.0.1|2|2|"});
  EXPECT_EQ(hear({"XCMD_Notify:4:cap=3,mac=B,ver=5,\r\n"}), Strings{"B|127.0.0.1|5|3|mac=B,ver=5,"});
  const Module elsewhere(0, "127.0.0.2");
  elsewhere.send("xcmd_notify:1:mac=A,ver=1,cap=2\r\n", port);
  EXPECT_EQ(hear({}), Strings{"A|127.0.0.2|1|2|"});
  EXPECT_NE(delegate->thread, std::thread::id());
  EXPECT_EQ(delegate->thread, std::this_thread::get_id());

  ASSERT_EQ(suite.SmartConfigOnlineListen(port), port);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=2"}), Strings{"A|127.0.0.1|1|2|"}) << "a new listener";
}

TEST_F(Listen, KeepsWhatALineDoesNotCarry) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A"}), Strings{"A|127.0.0.1|||"});
  EXPECT_EQ(hear({"xcmd_notify:1:mac=C,VER=9,MAC=D"}), Strings{"C|127.0.0.1||0|"}) << "keys keep their case";
  EXPECT_EQ(hear({"xcmd_notify:1:ver=7"}), Strings{"LAST|127.0.0.1|7|1|"});
  EXPECT_EQ(hear({"xcmd_notify:1:cap=8,flag,mac=E,ver=a=b"}),
            Strings{"LAST|127.0.0.1||8|flag,mac=E,ver=a=b"});
}

TEST_F(Listen, DropsWhatIsNoNotification) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  EXPECT_EQ(hear({"", "xcmd_notify", "xcmd_rsp:1:mac=A,ver=1,cap=2\r\n", "garbage", std::string(3000, 'x'),
                  std::string("\0xcmd_notify:1:mac=A", 20)}),
            Strings{});
}

TEST_F(Listen, CutsValuesAtTheirFields) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  const auto text = [](std::size_t length, char c) { return std::string(length, c); };
  EXPECT_EQ(
      hear({"xcmd_notify:1:mac=" + text(30, 'm') + ",ver=" + text(20, 'v') + ",cap=" + text(100, 'c') + "," +
            text(600, 'e') + "=1"}),
      Strings{text(19, 'm') + "|127.0.0.1|" + text(19, 'v') + "|" + text(39, 'c') + "|" + text(399, 'e')});
  EXPECT_EQ(hear({"xcmd_notify:" + text(1500, '=')}).size(), 0U) << "a line of nothing but '='";
  EXPECT_EQ(hear({"xcmd_notify:1:" + text(600, 'k') + "=" + text(600, 'v') + ",mac=Z"}).size(), 0U);
}

TEST_F(Listen, RecyclesTheOldestRecordBeyondAHundred) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  const auto line = [](int number) {
    return "xcmd_notify:1:mac=M" + std::to_string(number) + ",ver=1,cap=1";
  };
  Strings lines;
  for (int number = 0; number < 99; ++number) lines.push_back(line(number));
  EXPECT_EQ(hear(lines).size(), 99U);  // And LAST makes a hundred.
  EXPECT_EQ(hear({line(0), line(98)}).size(), 0U) << "the 101st, LAST again, takes the place of 0";
  EXPECT_EQ(hear({line(1), line(0)}), Strings{"M0|127.0.0.1|1|1|"}) << "it took the place of 1";
  EXPECT_EQ(hear({line(98), line(1)}).size(), 1U);
}

TEST_F(Listen, DeliversToTheDelegateOfTheMomentAndRecordsWithoutOne) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  suite.setDelegate(nullptr);
  module.send("xcmd_notify:1:mac=A,ver=1,cap=1", port);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  suite.setDelegate(delegate);
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=1"}), Strings{}) << "recorded though nobody listened";

  module.send("xcmd_notify:1:mac=B,ver=1,cap=1", port);
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
    ASSERT_EQ(temporary.SmartConfigOnlineListen(0), port);
  }
  module.send("xcmd_notify:1:mac=A,ver=1,cap=1", port);
  const auto alive = weak.lock();
  ASSERT_NE(alive, nullptr);
  EXPECT_TRUE(drainUntil(alive->announced, 1));
}

TEST_F(Listen, ReportsAgainWhatFoundTheQueueFull) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  for (int count = 0; count < 1024; ++count) ASSERT_TRUE(ZorPostToMainQueue([] {}));
  module.send("xcmd_notify:1:mac=A,ver=1,cap=1", port);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(ZorRunMainQueue(0), 1024);
  EXPECT_TRUE(delegate->announced.empty());
  EXPECT_EQ(hear({"xcmd_notify:1:mac=A,ver=1,cap=1"}), Strings{"A|127.0.0.1|1|1|"});
}

TEST_F(Listen, EndsSoonAfterAStopAndDoesNotSpinOnABrokenDescriptor) {
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  suite.SmartConfigStop();
  EXPECT_TRUE(waitUntil([] { return !s_threadSmartOnlineListen; }, 200));

  ASSERT_EQ(suite.SmartConfigOnlineListen(0), port);
  ZorUdpClose(s_ZorDevice.listenSocket);
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_LT(static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC, 0.1);
  s_ZorDevice.listenSocket = -1;  // Not to close a descriptor that is another's by now.
}

}  // namespace
