#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "tests/support/FakeSystem.h"
#include "tests/support/Module.h"
#include "tests/support/RecordingDelegate.h"
#include "tests/support/Wait.h"

namespace {

const std::string kCommand = "xcmd_req:123:cmd=upgrade,host=h,port=8080,file=/fw.bin\r\n";
const std::string kStatusRequest = "xcmd_req:321:cmd=upgradestatus\r\n";

TEST(UpgradeCommand, SplitsTheUrlOrRefusesIt) {
  struct Case {
    std::string url;
    std::int32_t result;
    std::string data;
  };
  const auto repeat = [](std::size_t count) { return std::string(count, 'x'); };
  const Case cases[] = {
      {"http://192.168.1.20:8080/fw/app.bin", 0, "host=192.168.1.20,port=8080,file=/fw/app.bin"},
      {"http://192.168.1.20/app.bin", 0, "host=192.168.1.20,file=/app.bin"},
      {"http://h:/", 0, "host=h,port=,file=/"},
      {"https://h/f", -1, ""},
      {"HTTP://h/f", -1, ""},
      {"http:/", -1, ""},
      {"", -1, ""},
      {"http://192.168.1.20", -2, ""},
      {"http://h:80", -2, ""},
      {"http://h/a:b", -2, ""},
      {"http://h/a\nb", -2, ""},
      {"http://h\x7F/a", -2, ""},
      {"http://" + repeat(127) + "/", 0, "host=" + repeat(127) + ",file=/"},
      {"http://" + repeat(128) + "/", -2, ""},
      {"http://h:" + repeat(15) + "/", 0, "host=h,port=" + repeat(15) + ",file=/"},
      {"http://h:" + repeat(16) + "/", -2, ""},
      // 27 bytes of line and 12 of keys and host leave 473 to the file.
      {"http://h/" + repeat(472), 0, "host=h,file=/" + repeat(472)},
      {"http://h/" + repeat(473), -2, ""},
  };
  for (const Case& c : cases) {
    char out[kZorUpgradeCmdDataSize] = "";
    EXPECT_EQ(ZorBuildUpgradeCmdData(c.url.c_str(), out), c.result) << c.url;
    EXPECT_EQ(std::string(out), c.data);
  }
}

class Upgrade : public testing::Test {
 protected:
  Upgrade() {
    ZorGetUsec();
    system.clockAheadMs = 1000;
  }
  ~Upgrade() override {
    system.clockAheadMs += 20000;  // Silence ends whatever still runs.
    s_threadUpgrade.waitUntilEmpty();
  }

  void start() { suite.DeviceUpgrade("127.0.0.1", "http://h:8080/fw.bin"); }

  /// The next request, without waiting for the interval to pass on the real clock.
  Module::Request nextRequest() {
    if (Module::Request request = module.receive(30); !request.line.empty()) return request;
    system.clockAheadMs += 501;
    return module.receive(2000);
  }

  bool statusBecomes(std::int32_t status) {
    return waitUntil([&] { return suite.DeviceUpgradeProgress() == status; }, 2000);
  }
  bool over() {
    return waitUntil([] { return !s_threadUpgrade; }, 2000);
  }

  FakeSystem system;
  ZorSuite suite;
  Module module{25000, "127.0.0.1"};
};

TEST_F(Upgrade, FollowsTheModuleToItsEnd) {
  start();
  Module::Request request = nextRequest();
  EXPECT_EQ(request.line, kCommand);
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 1);
  EXPECT_EQ(nextRequest().line, kCommand) << "repeated until it is answered";
  module.answer(request, "xcmd_rsp:123:x=1,ret=0,\r\n");
  EXPECT_TRUE(statusBecomes(2));

  struct Case {
    const char* answer;
    std::int32_t status;
  };
  for (const Case& c : {Case{"xcmd_rsp:321:status=45\r\n", 45}, Case{"XCMD_RSP:321:status=1\r\n", 2},
                        Case{"xcmd_rsp:321:status=99", 99}, Case{"xcmd_rsp:321:status=-3", 2},
                        Case{"xcmd_rsp:321:status=46", 46}, Case{"xcmd_rsp:123:ret=5", 2}}) {
    request = nextRequest();
    EXPECT_EQ(request.line, kStatusRequest);
    module.answer(request, c.answer);
    EXPECT_TRUE(statusBecomes(c.status)) << c.answer;
  }
  module.answer(nextRequest(), "xcmd_rsp:321:STATUS=50");
  module.answer(nextRequest(), "xcmd_rsp:7:status=50,ret=-9");
  module.answer(nextRequest(), "xcmd_rsp:321:nothing");
  EXPECT_EQ(nextRequest().line, kStatusRequest);
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 2) << "none of these says anything";
  module.answer(nextRequest(), "xcmd_rsp:321:status=100");
  EXPECT_TRUE(over());
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 100);
}

TEST_F(Upgrade, EndsWithEachFinalStatus) {
  struct Case {
    const char* answer;
    std::int32_t status;
  };
  for (const Case& c : {Case{"xcmd_rsp:123:ret=-3", -3}, Case{"xcmd_rsp:321:status=250", 250},
                        Case{"xcmd_rsp:123:ret=-99999999999", INT32_MIN}}) {
    start();
    const Module::Request request = nextRequest();
    module.answer(request, c.answer);
    EXPECT_TRUE(over());
    EXPECT_EQ(suite.DeviceUpgradeProgress(), c.status);
    while (!module.receive(0).line.empty()) {
    }
  }
}

TEST_F(Upgrade, RefusesUrlsAndMissingSockets) {
  const std::pair<std::string, std::int32_t> cases[] = {{"https://h/f", -111},
                                                        {"http://192.168.1.20", -112},
                                                        {"http://h/a:b", -112},
                                                        {"http://h/" + std::string(503, 'x'), -112},
                                                        {"http://h/f", -121}};
  for (const auto& [url, status] : cases) {
    system.denySockets = status == -121;
    suite.DeviceUpgrade("127.0.0.1", url);
    EXPECT_TRUE(over());
    EXPECT_EQ(suite.DeviceUpgradeProgress(), status) << url;
  }
  EXPECT_TRUE(system.sent().empty());
}

TEST_F(Upgrade, GivesUpAfterTenSecondsOfSilence) {
  start();
  EXPECT_EQ(nextRequest().line, kCommand);
  module.answer(nextRequest(), "xcmd_rsp:0:any=answer");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  system.clockAheadMs += 9800;
  EXPECT_EQ(module.receive(1000).line, kCommand) << "still asking";
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 1);
  system.clockAheadMs += 300;
  EXPECT_TRUE(over());
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -100);
}

TEST_F(Upgrade, IsNotFedByStrangers) {
  const Module otherPort(0, "127.0.0.1"), otherAddress(25000, "127.0.0.2");
  start();
  const Module::Request request = nextRequest();
  system.clockAheadMs += 9000;
  for (const Module* stranger : {&otherPort, &otherAddress}) stranger->answer(request, "xcmd_rsp:123:ret=0");
  module.answer(request, "xcmd_notify:123:ret=0");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 1);
  system.clockAheadMs += 1200;
  EXPECT_TRUE(over()) << "nor does it make the silence shorter";
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -100);
}

TEST_F(Upgrade, LetsSilenceWinOverAFinalStatus) {
  system.failSendsWhen([this](const SentDatagram&) {
    // In one pass of the worker: a final status, and more silence than it may bear.
    s_ZorDevice.upgradeStatus = 100;
    system.clockAheadMs += 20000;
    return true;
  });
  start();
  EXPECT_TRUE(over());
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -100);
  EXPECT_EQ(system.sent().size(), 1U);
}

TEST_F(Upgrade, WaitsForTheOneThatRuns) {
  start();
  const Module::Request request = nextRequest();
  std::thread later([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    module.answer(request, "xcmd_rsp:123:ret=-7");
  });
  const auto before = std::chrono::steady_clock::now();
  suite.SmartConfigStop();
  suite.DeviceUpgrade("127.0.0.1", "https://h/f");
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(90));
  later.join();
  EXPECT_TRUE(over());
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -111);
}

TEST_F(Upgrade, CutsTheAddressAtFifteenCharacters) {
  suite.DeviceUpgrade("127.100.200.1000", "http://h/f");
  EXPECT_STREQ(s_ZorDevice.upgradeIp, "127.100.200.100");
  ASSERT_TRUE(system.waitForSends(1, 1000));
  EXPECT_EQ(system.sent()[0].destination, "127.100.200.100");
}

TEST_F(Upgrade, RunsBesideEveryOtherWorker) {
  const auto delegate = std::make_shared<RecordingDelegate>();
  suite.setDelegate(delegate);
  ASSERT_EQ(suite.SmartConfigOnlineListen(0), 25010);
  suite.SmartConfigV5_Start("home", "secret", 60000);
  suite.DeviceSearchSetProperty(20, 20);
  start();
  module.answer(nextRequest(), "xcmd_rsp:123:ret=0");
  EXPECT_TRUE(statusBecomes(2));
  const Module everywhere(25000);
  suite.DeviceSearch();
  everywhere.answer(everywhere.receive(), "xcmd_rsp:0:mac=A,ver=1,cap=1");
  module.send("xcmd_notify:0:mac=A,ver=1,cap=1", 25010);
  EXPECT_TRUE(drainUntil(delegate->announced, 1));
  EXPECT_TRUE(drainUntil(delegate->searched, 1));
  EXPECT_TRUE(s_threadSmartConfigMc && s_threadSmartConfigBc && s_threadSmartOnlineListen && s_threadUpgrade);
  suite.SmartConfigStop();
  suite.DeviceSearchSetProperty(0, 0);
  for (ZorWorkerHandle* handle :
       {&s_threadSmartConfigMc, &s_threadSmartConfigBc, &s_threadSmartOnlineListen, &s_threadDeviceSearch}) {
    handle->waitUntilEmpty();
  }
  EXPECT_TRUE(s_threadUpgrade) << "a stop leaves the upgrade alone";
}

}  // namespace
