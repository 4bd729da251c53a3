#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "ZOR/ZorSuite.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingDelegate.h"
#include "tests/support/UdpPeer.h"
#include "tests/support/Workers.h"

/// A suite on a system that records, with all that speaks to it and hears of it. No worker outlives the
/// test.
class SuiteTest : public testing::Test {
 protected:
  SuiteTest() {
    ZorGetUsec();  // From here on a clock that is ahead counts.
    suite.setDelegate(delegate);
  }
  ~SuiteTest() override {
    system.clockAheadMs += 20000;  // Silence ends an upgrade.
    endWorkers();
  }

  void startRun(bool version3, std::int32_t timeoutMs) {
    if (version3) suite.SmartConfigV3_Start("home", "secret", timeoutMs);
    if (!version3) suite.SmartConfigV5_Start("home", "secret", timeoutMs);
  }

  /// True when the delegate hears of a module that announces itself now.
  bool isHeard(const std::string& id, const std::string& address = "127.0.0.1") {
    const std::size_t before = delegate->announced.size();
    module.send("xcmd_notify:0:mac=" + id + ",ver=1,cap=1", kPort, address);
    return drainUntil(delegate->announced, before + 1);
  }

  static constexpr std::int32_t kPort = 25010;

  FakeSystem system;
  LogCapture log;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
  ZorSuite suite;
  UdpPeer module{0, "127.0.0.1"};
};
