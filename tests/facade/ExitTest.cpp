#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "ZOR/ZorSuite.h"
#include "tests/support/RecordingDelegate.h"
#include "tests/support/UdpPeer.h"

namespace {

/// Leaves the process, with destructors and exit handlers, while every worker runs and a callback
/// waits on the queue.
[[noreturn]] void exitInMidRun(int delayMs) {
  const UdpPeer module(0, "127.0.0.1");
  ZorSuite suite;
  suite.setDelegate(std::make_shared<RecordingDelegate>());
  suite.SmartConfigOnlineListen(25010);
  suite.SmartConfigV5_Start("home", "secret", 60000);
  suite.DeviceSearchSetProperty(1, 1000);
  suite.DeviceSearch();
  suite.DeviceUpgrade("127.0.0.1", "http://h/f");
  module.send("xcmd_notify:1:mac=A,ver=1,cap=1", 25010);
  std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
  std::exit(0);
}

TEST(Exit, IsCleanInMidRun) {
  for (const int delayMs : {0, 1, 15, 40}) {
    EXPECT_EXIT(exitInMidRun(delayMs), testing::ExitedWithCode(0), "") << delayMs;
  }
}

}  // namespace
