#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZORBroadcast_SSID_Password.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Module.h"
#include "tests/support/RecordingDelegate.h"

namespace {

using Strings = std::vector<std::string>;

class Wrapper : public ZORBroadcast_SSID_Password {
 public:
  void LogStr(std::string_view text) override {
    lines.emplace_back(text);
    ZORBroadcast_SSID_Password::LogStr(text);
  }
  Strings lines;
};

void stopAndWait(Wrapper& wrapper) {
  wrapper.stopBroadcast();
  s_threadSmartConfigBc.waitUntilEmpty();
  s_threadSmartConfigMc.waitUntilEmpty();
  s_threadSmartOnlineListen.waitUntilEmpty();
}

TEST(Wrapper, ListensRunsAndStopsWithOneCallEach) {
  FakeSystem system;
  const LogCapture log;
  Wrapper wrapper;
  wrapper.stopBroadcast();
  EXPECT_EQ(log.lines(), Strings{"SmartConfig v5 stop..."}) << "a stop before any start";

  wrapper.startBroadcast_SSID("home", "secret!!");
  EXPECT_EQ(wrapper.lines, (Strings{"append = nil", "SmartConfig v5 start..."}));
  EXPECT_EQ(ZorRunMainQueue(0), 2) << "its lines pass through the main queue, to nowhere";
  EXPECT_EQ(s_ZorDevice.smartTimeout, 100000);
  ASSERT_TRUE(system.waitForSends(4, 2000));
  EXPECT_TRUE(log.has("start smart v5, ssid=home, pass=secret!!, append 0 byte"));

  wrapper.startBroadcast_SSID("home", "secret!!");
  const auto delegate = std::make_shared<RecordingDelegate>();
  wrapper.myZorSuite()->setDelegate(delegate);
  Module().send("xcmd_notify:1:mac=A,ver=1,cap=1", 25010);
  EXPECT_TRUE(drainUntil(delegate->announced, 1)) << "the second run has a listener";
  stopAndWait(wrapper);
}

TEST(Wrapper, TellsTheModuleAnotherPort) {
  const Module taken(25010);
  FakeSystem system;
  const LogCapture log;
  Wrapper wrapper;
  wrapper.startBroadcast_SSID("s", "p");
  EXPECT_EQ(wrapper.lines, (Strings{"append(3)= <01b361>", "SmartConfig v5 start..."}));
  EXPECT_EQ(std::vector<int>(s_ZorDevice.appendData, s_ZorDevice.appendData + 4),
            (std::vector<int>{0x01, 0xB3, 0x61, 0}));
  ASSERT_TRUE(system.waitForSends(3, 2000));
  EXPECT_TRUE(log.has("start smart v5, ssid=s, pass=p, append 3 byte"));
  stopAndWait(wrapper);
}

TEST(Wrapper, RunsWithoutAListenerWhenThereIsNone) {
  FakeSystem system;
  system.denySockets = true;
  Wrapper wrapper;
  wrapper.startBroadcast_SSID("s", "p");
  EXPECT_EQ(wrapper.lines.front(), "append = nil");
  EXPECT_FALSE(s_threadSmartOnlineListen);
  stopAndWait(wrapper);
}

}  // namespace
