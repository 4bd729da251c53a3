#include <string>

#include "tests/support/SuiteTest.h"

namespace {

const std::string kCommand = "xcmd_req:123:cmd=upgrade,host=h,port=8080,file=/fw.bin\r\n";
const std::string kStatusRequest = "xcmd_req:321:cmd=upgradestatus\r\n";

TEST(UpgradeCommand, SplitsTheUrlOrRefusesIt) {
  const auto repeat = [](std::size_t count) { return std::string(count, 'x'); };
  const struct {
    std::string url;
    std::int32_t result;
    std::string data;
  } kCases[] = {
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
  for (const auto& [url, result, data] : kCases) {
    char out[kZorUpgradeCmdDataSize] = "";
    EXPECT_EQ(ZorBuildUpgradeCmdData(url.c_str(), out), result) << url;
    EXPECT_EQ(out, data);
  }
}

class Upgrade : public SuiteTest {
 protected:
  Upgrade() { system.clockAheadMs = 1000; }

  void start(const std::string& url = "http://h:8080/fw.bin") { suite.DeviceUpgrade("127.0.0.1", url); }

  /// The next request, without waiting for the interval to pass on the real clock.
  UdpPeer::Datagram nextRequest() {
    if (UdpPeer::Datagram request = upgrading.receive(30); !request.text.empty()) return request;
    system.clockAheadMs += 501;
    return upgrading.receive(2000);
  }

  bool statusBecomes(std::int32_t status) {
    return waitUntil([&] { return suite.DeviceUpgradeProgress() == status; }, 2000);
  }
  bool endsWith(std::int32_t status) {
    return isOver(s_threadUpgrade) && suite.DeviceUpgradeProgress() == status;
  }

  UdpPeer upgrading{25000, "127.0.0.1"};
};

TEST_F(Upgrade, FollowsTheModuleToItsEnd) {
  start();
  UdpPeer::Datagram request = nextRequest();
  EXPECT_EQ(request.text, kCommand);
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 1);
  EXPECT_EQ(nextRequest().text, kCommand) << "repeated until it is answered";
  upgrading.answer(request, "xcmd_rsp:123:x=1,ret=0,\r\n");
  EXPECT_TRUE(statusBecomes(2));

  const std::pair<const char*, std::int32_t> kAnswers[] = {
      {"xcmd_rsp:321:status=45\r\n", 45}, {"XCMD_RSP:321:status=1\r\n", 2}, {"xcmd_rsp:321:status=99", 99},
      {"xcmd_rsp:321:status=-3", 2},      {"xcmd_rsp:321:status=46", 46},   {"xcmd_rsp:123:ret=5", 2}};
  for (const auto& [answer, status] : kAnswers) {
    request = nextRequest();
    EXPECT_EQ(request.text, kStatusRequest);
    upgrading.answer(request, answer);
    EXPECT_TRUE(statusBecomes(status)) << answer;
  }
  upgrading.answer(nextRequest(), "xcmd_rsp:321:STATUS=50");
  upgrading.answer(nextRequest(), "xcmd_rsp:7:status=50,ret=-9");
  upgrading.answer(nextRequest(), "xcmd_rsp:321:nothing");
  EXPECT_EQ(nextRequest().text, kStatusRequest);
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 2) << "none of these says anything";
  upgrading.answer(nextRequest(), "xcmd_rsp:321:status=100");
  EXPECT_TRUE(endsWith(100));
}

TEST_F(Upgrade, EndsWithEachFinalStatus) {
  const std::pair<const char*, std::int32_t> kAnswers[] = {{"xcmd_rsp:123:ret=-3", -3},
                                                           {"xcmd_rsp:123:ret=-121", -121},
                                                           {"xcmd_rsp:321:status=250", 250},
                                                           {"xcmd_rsp:123:ret=-99999999999", INT32_MIN}};
  for (const auto& [answer, status] : kAnswers) {
    start();
    upgrading.answer(nextRequest(), answer);
    EXPECT_TRUE(endsWith(status)) << answer;
    EXPECT_EQ(suite.DeviceUpgradeReport().state, ZorWorkerState::finished) << answer;
    while (!upgrading.receive(0).text.empty()) {
    }
  }
}

TEST_F(Upgrade, RefusesUrlsAndMissingSockets) {
  const std::pair<std::string, std::int32_t> cases[] = {{"https://h/f", -111},
                                                        {"http://192.168.1.20", -112},
                                                        {"http://h/" + std::string(503, 'x'), -112},
                                                        {"http://h/f", -121}};
  for (const auto& [url, status] : cases) {
    system.denySockets = status == -121;
    start(url);
    EXPECT_TRUE(endsWith(status)) << url;
    EXPECT_EQ(suite.DeviceUpgradeReport().state,
              status == -121 ? ZorWorkerState::noSocket : ZorWorkerState::finished);
  }
  EXPECT_TRUE(system.sent().empty());
}

TEST_F(Upgrade, GivesUpAfterTenSecondsOfSilence) {
  start();
  EXPECT_EQ(nextRequest().text, kCommand);
  upgrading.answer(nextRequest(), "xcmd_rsp:0:any=answer");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  system.clockAheadMs += 9200;  // It looks at its clock when it asks, twice a second.
  EXPECT_EQ(upgrading.receive(1000).text, kCommand) << "still asking";
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 1);
  system.clockAheadMs += 900;
  EXPECT_TRUE(endsWith(-100));
}

TEST_F(Upgrade, IsNotKeptAliveByStrangers) {
  const UdpPeer otherPort(0, "127.0.0.1"), otherAddress(25000, "127.0.0.2");
  start();
  const UdpPeer::Datagram request = nextRequest();
  system.clockAheadMs += 9000;
  for (const UdpPeer* stranger : {&otherPort, &otherAddress}) stranger->answer(request, "xcmd_rsp:123:ret=0");
  upgrading.answer(request, "xcmd_notify:123:ret=0");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 1);
  system.clockAheadMs += 1200;
  EXPECT_TRUE(endsWith(-100)) << "nor does it make the silence shorter";
  const ZorUpgradeReport report = suite.DeviceUpgradeReport();
  EXPECT_EQ(report.state, ZorWorkerState::finished);
  EXPECT_GE(report.requestsSent, 1);
  EXPECT_EQ(report.datagrams, 3);
  EXPECT_EQ(report.answers, 0);
  EXPECT_EQ(report.otherPort, 1);
  EXPECT_EQ(report.otherAddress, 1);
  EXPECT_EQ(report.notAResponse, 1);
}

TEST_F(Upgrade, OpensAnotherSocketWhenTheSystemTakesItsOwnAway) {
  start();
  const UdpPeer::Datagram first = nextRequest();
  system.failReceives(1, ENOTCONN);
  upgrading.answer(first, "lost with the socket");
  ASSERT_TRUE(waitUntil([&] { return suite.DeviceUpgradeReport().socketsOpened == 2; }, 2000));
  upgrading.answer(nextRequest(), "xcmd_rsp:123:ret=-4");
  EXPECT_TRUE(endsWith(-4));
}

TEST_F(Upgrade, LetsSilenceWinOverAFinalStatus) {
  system.failSendsWhen([this](const SentDatagram&) {
    // In one pass of the worker: a final status, and more silence than it may bear.
    s_ZorDevice.upgradeStatus = 100;
    system.clockAheadMs += 20000;
    return true;
  });
  start();
  EXPECT_TRUE(endsWith(-100));
  EXPECT_EQ(system.sent().size(), 1U);
}

TEST_F(Upgrade, WaitsForTheOneThatRuns) {
  start();
  const UdpPeer::Datagram request = nextRequest();
  std::thread later([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    upgrading.answer(request, "xcmd_rsp:123:ret=-7");
  });
  const auto before = std::chrono::steady_clock::now();
  suite.SmartConfigStop();
  start("https://h/f");
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(90));
  later.join();
  EXPECT_TRUE(endsWith(-111));
}

TEST_F(Upgrade, CutsTheAddressAtFifteenCharacters) {
  suite.DeviceUpgrade("127.100.200.1000", "http://h/f");
  EXPECT_STREQ(s_ZorDevice.upgradeIp, "127.100.200.100");
  ASSERT_TRUE(system.waitForSends(1, 1000));
  EXPECT_EQ(system.sent()[0].destination, "127.100.200.100");
}

}  // namespace
