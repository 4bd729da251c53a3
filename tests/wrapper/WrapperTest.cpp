#include <string>
#include <vector>

#include "ZORBroadcast_SSID_Password.h"
#include "tests/support/SuiteTest.h"

namespace {

using Strings = std::vector<std::string>;

class TracingWrapper : public ZORBroadcast_SSID_Password {
 public:
  void LogStr(std::string_view text) override {
    lines.emplace_back(text);
    ZORBroadcast_SSID_Password::LogStr(text);
  }
  Strings lines;
};

class Wrapper : public SuiteTest {
 protected:
  TracingWrapper wrapper;
};

TEST_F(Wrapper, ListensRunsAndStopsWithOneCallEach) {
  wrapper.stopBroadcast();
  EXPECT_EQ(log.lines(), Strings{"SmartConfig v5 stop..."}) << "a stop before any start";

  wrapper.startBroadcast_SSID("home", "secret!!");
  EXPECT_EQ(wrapper.lines, (Strings{"append = nil", "SmartConfig v5 start..."}));
  EXPECT_EQ(ZorRunMainQueue(0), 2) << "its lines pass through the main queue, to nowhere";
  EXPECT_EQ(s_ZorDevice.smartTimeout, 100000);
  ASSERT_TRUE(system.waitForSends(4, 2000));
  EXPECT_TRUE(log.has("start smart v5, ssid=home, pass=secret!!, append 0 byte"));

  wrapper.startBroadcast_SSID("home", "secret!!");
  wrapper.myZorSuite()->setDelegate(delegate);
  EXPECT_TRUE(isHeard("A")) << "the second run has a listener";
  const auto started = wrapper.myZorSuite();
  wrapper.setMyZorSuite(nullptr);
  wrapper.stopBroadcast();
  EXPECT_TRUE(s_threadSmartConfigMc) << "there is no suite to stop";
  wrapper.setMyZorSuite(started);
  wrapper.stopBroadcast();
  EXPECT_TRUE(runIsOver() && isOver(s_threadSmartOnlineListen));
}

TEST_F(Wrapper, TellsTheModuleAnotherPort) {
  const UdpPeer taken(25010);
  wrapper.startBroadcast_SSID("s", "p");
  EXPECT_EQ(wrapper.lines, (Strings{"append(3)= <01b361>", "SmartConfig v5 start..."}));
  EXPECT_EQ(std::vector<int>(s_ZorDevice.appendData, s_ZorDevice.appendData + 4),
            (std::vector<int>{0x01, 0xB3, 0x61, 0}));
  ASSERT_TRUE(system.waitForSends(3, 2000));
  EXPECT_TRUE(log.has("start smart v5, ssid=s, pass=p, append 3 byte"));
}

TEST_F(Wrapper, RunsWithoutAListenerWhenThereIsNone) {
  system.denySockets = true;
  wrapper.startBroadcast_SSID("s", "p");
  EXPECT_EQ(wrapper.lines.front(), "append = nil");
  EXPECT_FALSE(s_threadSmartOnlineListen);
}

}  // namespace
