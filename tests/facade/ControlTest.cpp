#include <string>
#include <vector>

#include "tests/support/SuiteTest.h"

namespace {

using Control = SuiteTest;

/// Pacing that switches both channels off: a start fills the state and starts no worker.
void switchChannelsOff() {
  s_ZorSmart5_McLen = 0;
  s_ZorSmart5_BcLen = 0;
}

TEST_F(Control, ReleasesTheDelegateThatItReplaces) {
  suite.setDelegate(nullptr);
  EXPECT_EQ(delegate.use_count(), 1);
}

TEST_F(Control, DoesNothingWhenAWorkerEntryIsCalled) {
  s_ZorDevice.smartTimeout = 1000;
  s_ZorDevice.upgradeStatus = 77;
  suite.threadSmartConfigV5_mc();
  suite.threadSmartConfigV5_bc();
  suite.threadSmartConfigV3();
  suite.threadDeviceSearch();
  suite.threadSmartOnlineListen();
  suite.threadUpgrade();
  EXPECT_TRUE(system.sent().empty());
  EXPECT_EQ(suite.DeviceUpgradeProgress(), 77);
}

TEST_F(Control, CutsTextsAndKeepsTheApplicationData) {
  switchChannelsOff();
  std::vector<std::uint8_t> bytes(20, 0xA5);
  suite.SmartConfigV5_Append(bytes.data(), bytes.size());
  EXPECT_EQ(s_ZorDevice.appendLen, 16);
  EXPECT_EQ(s_ZorDevice.appendData[15], 0xA5);
  EXPECT_EQ(s_ZorDevice.appendData[16], 0);

  suite.SmartConfigV5_Start(std::string(40, 's'), std::string(70, 'p'), 1000);
  EXPECT_EQ(std::string(s_ZorDevice.ssid), std::string(32, 's'));
  EXPECT_EQ(std::string(s_ZorDevice.password), std::string(64, 'p'));
  suite.SmartConfigV5_Start(std::string_view("a\0b", 3), "\xC3\xBC", 1000);
  EXPECT_STREQ(s_ZorDevice.ssid, "a");
  EXPECT_STREQ(s_ZorDevice.password, "\xC3\xBC");
  EXPECT_EQ(s_ZorDevice.ssid[31], 0) << "nothing of the longer text stays";
  EXPECT_EQ(s_ZorDevice.appendLen, 16);
  suite.SmartConfigV5_Start(s_ZorDevice.ssid, s_ZorDevice.password, 1000);
  suite.SmartConfigV5_Append(s_ZorDevice.appendData, 16);
  EXPECT_STREQ(s_ZorDevice.password, "\xC3\xBC") << "a run may be repeated from the state's own texts";
  EXPECT_EQ(s_ZorDevice.appendData[15], 0xA5);

  suite.SmartConfigV5_Append(nullptr, 5);
  EXPECT_EQ(s_ZorDevice.appendLen, 0);
  EXPECT_EQ(s_ZorDevice.appendData[0], 0xA5) << "no buffer leaves the bytes";
  suite.SmartConfigV5_Append(bytes.data(), 0);
  EXPECT_EQ(s_ZorDevice.appendData[0], 0) << "an empty buffer clears them";
}

TEST_F(Control, SetsAllFourteenTunablesOrNone) {
  ZorTunable* const tunables[] = {
      &s_ZorSmart5_McLen,           &s_ZorSmart5_McCharInterval,  &s_ZorSmart5_McLoopInterval,
      &s_ZorSmart5_McBlockInterval, &s_ZorSmart5_McTagRepeat,     &s_ZorSmart5_McDataRepeat,
      &s_ZorSmart5_McLoopRepeat,    &s_ZorSmart5_BcLen,           &s_ZorSmart5_BcCharInterval,
      &s_ZorSmart5_BcLoopInterval,  &s_ZorSmart5_BcBlockInterval, &s_ZorSmart5_BcTagRepeat,
      &s_ZorSmart5_BcDataRepeat,    &s_ZorSmart5_BcLoopRepeat};
  const int defaults[] = {30, 30, 100, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5};
  const std::uint8_t bytes[15] = {255, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 200, 99};
  suite.SmartConfigV5_SetProperty(bytes, 13);
  suite.SmartConfigV5_SetProperty(nullptr, 14);
  for (int i = 0; i < 14; ++i) EXPECT_EQ(*tunables[i], defaults[i]) << i;
  suite.SmartConfigV5_SetProperty(bytes, 15);
  for (int i = 0; i < 14; ++i) EXPECT_EQ(*tunables[i], bytes[i]) << i;
  suite.SmartConfigV5_MixV3Enable(2);
  EXPECT_EQ(s_ZorSmart5_MixV3, 2);
}

TEST_F(Control, ProgressIsTheShareOfTheTimeOut) {
  switchChannelsOff();
  const struct {
    std::int32_t status, timeout;
    long passed;
    std::int32_t progress;
  } kCases[] = {{0, 100000, 0, 0},        {0, 100000, 25000, 25},  {0, 100000, 100001, 100},
                {0, 100000, 250000, 100}, {-201, 100000, 5, -201}, {0, 0, 5, 100},
                {0, -5, 5, 100},          {0, 3, 2, 66},           {0, 100000, 21474837, -21474},
                {0, 100000, -2500, -2}};
  for (const auto& c : kCases) {
    suite.SmartConfigV5_Start("s", "p", c.timeout);
    EXPECT_EQ(s_ZorDevice.smartStatus, 0) << "a start forgets the code of the run before";
    s_ZorDevice.smartStatus = c.status;
    s_ZorDevice.smartLastMs = s_ZorDevice.smartStartMs + c.passed;
    EXPECT_EQ(suite.SmartConfigProgress(), c.progress) << c.timeout << " ms, " << c.passed << " passed";
  }
}

TEST_F(Control, StartsOnlyTheChannelsThatAreOn) {
  for (const bool multicast : {true, false}) {
    system.forgetSent();
    s_ZorSmart5_McLen = multicast ? 30 : 0;
    s_ZorSmart5_BcLen = multicast ? 0 : 30;
    suite.SmartConfigV5_Start("s", "p", 60000);
    EXPECT_EQ(static_cast<bool>(s_threadSmartConfigMc), multicast);
    EXPECT_EQ(static_cast<bool>(s_threadSmartConfigBc), !multicast);
    ASSERT_TRUE(system.waitForSends(3, 2000));
    for (const SentDatagram& sent : system.sent()) {
      EXPECT_EQ(sent.destination == "255.255.255.255", !multicast);
      EXPECT_EQ(sent.port, 6001);
      EXPECT_EQ(sent.bytes, std::string(sent.bytes.size(), '\0'));
    }
    if (!multicast) {
      EXPECT_EQ(s_ZorDevice.smartLastMs, s_ZorDevice.smartStartMs) << "only multicasts stamp";
    }
    suite.SmartConfigStop();
    ASSERT_TRUE(runIsOver());
  }
}

TEST_F(Control, SaysWhenNoThreadCanBeCreated) {
  system.denyThreads = true;
  EXPECT_EQ(suite.SmartConfigOnlineListen(25010), -1);
  EXPECT_EQ(s_ZorDevice.listenSocket, -1);
  suite.SmartConfigV5_Start("s", "p", 1000);
  EXPECT_EQ(suite.SmartConfigProgress(), -101);
  s_ZorSmart5_McLen = 0;
  suite.SmartConfigV5_Start("s", "p", 1000);
  EXPECT_EQ(suite.SmartConfigProgress(), -201);
  suite.DeviceUpgrade("127.0.0.1", "http://h/f");
  EXPECT_EQ(suite.DeviceUpgradeProgress(), -121);
  suite.DeviceSearch();
  for (const ZorWorkerHandle* handle : {&s_threadSmartConfigMc, &s_threadSmartConfigBc, &s_threadUpgrade,
                                        &s_threadDeviceSearch, &s_threadSmartOnlineListen}) {
    EXPECT_FALSE(*handle);
  }
  system.denyThreads = false;
  EXPECT_EQ(suite.SmartConfigOnlineListen(25010), 25010) << "the port was given back";
}

}  // namespace
