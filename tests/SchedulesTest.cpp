#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "ZOR/smartconfig/Schedules.h"
#include "tests/support/RecordingAir.h"

namespace {

using zor::CycleV3;
using zor::NoSocket;
using zor::PacketV3;
using zor::PacketV5;

zor::RunInputs inputs(const std::string& ssid, const std::string& password = "") {
  zor::RunInputs inputs{};
  ssid.copy(inputs.ssid, sizeof inputs.ssid - 1);
  password.copy(inputs.password, sizeof inputs.password - 1);
  return inputs;
}

const PacketV3 kNothingMixed;
const char* const kEveryHost = "255.255.255.255";

/// Every frame of `frames` fails as if no socket could be opened once `count` have gone through.
auto noSocketAfter(int count) {
  return [count](const Frame& frame) mutable { return count-- > 0 ? frame.length : -1; };
}

TEST(MulticastSchedule, SendsSyncThenTheEmptyPacketFiveTimes) {
  RecordingAir air;
  EXPECT_EQ(sendMulticastBlock(air, buildPacketV5(inputs("")), kNothingMixed), 0);
  std::vector<Frame> expected;
  for (std::int64_t start = 0; start < 950; start += 190) {
    expected.push_back({start, "239.122.111.114", 30});
    expected.push_back({start + 30, "239.111.16.0", 30});
    expected.push_back({start + 60, "239.114.0.0", 31});
  }
  EXPECT_EQ(air.frames, expected);
  EXPECT_EQ(air.now, 950);
}

TEST(MulticastSchedule, EndsAnOddPacketWithZeroAndNumbersFramesByLength) {
  s_ZorSmart5_McLoopRepeat = 1;
  RecordingAir odd;
  sendMulticastBlock(odd, buildPacketV5(inputs("abc")), kNothingMixed);
  EXPECT_EQ(odd.frames, (std::vector<Frame>{{0, "239.122.111.114", 30},
                                            {30, "239.111.16.240", 30},
                                            {60, "239.114.3.0", 31},
                                            {90, "239.111.97.98", 32},
                                            {120, "239.114.99.0", 33}}));
  RecordingAir longest;
  sendMulticastBlock(longest, buildPacketV5(inputs(std::string(32, 's'), std::string(64, 'p'))),
                     kNothingMixed);
  ASSERT_EQ(longest.frames.size(), 51U);
  EXPECT_EQ(longest.frames.back(), (Frame{1500, "239.114.112.112", 79}));
}

TEST(MulticastSchedule, FollowsItsTunables) {
  const std::uint8_t pacing[14] = {0, 7, 50, 9, 2, 2, 2, 30, 15, 100, 0, 1, 1, 5};
  ZorSuite().SmartConfigV5_SetProperty(pacing, sizeof pacing);
  RecordingAir air;
  sendMulticastBlock(air, buildPacketV5(inputs("")), kNothingMixed);
  EXPECT_EQ(air.lengths(), (std::vector<std::int32_t>{0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 0, 1}));
  EXPECT_EQ(air.frames[6].ms, 6 * 7 + 50);
  EXPECT_EQ(air.now, 2 * (6 * 7 + 50) + 9);

  s_ZorSmart5_McTagRepeat = 0;
  RecordingAir untagged;
  sendMulticastBlock(untagged, buildPacketV5(inputs("")), kNothingMixed);
  EXPECT_EQ(untagged.frames.front().destination, "239.111.16.0");

  s_ZorSmart5_McLoopRepeat = 0;
  RecordingAir silent;
  sendMulticastBlock(silent, buildPacketV5(inputs("")), kNothingMixed);
  EXPECT_TRUE(silent.frames.empty());
  EXPECT_EQ(silent.now, 9) << "only the block interval is waited";
}

TEST(MulticastSchedule, SeesTunablesThatChangeInMidRun) {
  RecordingAir air;
  air.onFrame = [&air](const Frame& frame) {
    if (air.frames.size() == 2) {
      s_ZorSmart5_McLen = 100;
      s_ZorSmart5_McCharInterval = 5;
      s_ZorSmart5_McLoopRepeat = 2;
      s_ZorSmart5_McTagRepeat = 3;
    }
    return frame.length;
  };
  sendMulticastBlock(air, buildPacketV5(inputs("")), kNothingMixed);
  EXPECT_EQ(air.lengths(), (std::vector<std::int32_t>{30, 30, 101, 100, 100, 100, 100, 101}));
  EXPECT_EQ(air.frames[2].ms, 35);
  EXPECT_EQ(air.frames[3].ms, 140);
}

TEST(MulticastSchedule, MixesVersion3FramesBehindEachCycle) {
  s_ZorSmart5_McLoopRepeat = 1;
  s_ZorSmart5_McLen = 60;
  RecordingAir air;
  EXPECT_EQ(sendMulticastBlock(air, buildPacketV5(inputs("")), buildPacketV3(inputs("a"))), 0);
  EXPECT_EQ(air.frames, (std::vector<Frame>{{0, "239.122.111.114", 60},
                                            {30, "239.111.16.0", 60},
                                            {60, "239.114.0.0", 61},
                                            {190, "239.90.0.0", 30},
                                            {200, "239.90.0.0", 30},
                                            {210, "239.90.0.0", 30},
                                            {220, "239.79.9.1", 31},
                                            {230, "239.82.0.97", 32}}));
  EXPECT_EQ(air.now, 260);
}

TEST(BroadcastSchedule, SendsSyncsThenValueAndPositionOfEachByte) {
  RecordingAir air;
  EXPECT_EQ(sendBroadcastBlock(air, buildPacketV5(inputs(""))), 0);
  const std::int32_t cycle[] = {30, 388, 31, 148, 32, 132, 33, 132, 34, 132, 35};
  std::vector<Frame> expected;
  std::int64_t at = 0;
  for (int repeat = 0; repeat < 5; ++repeat, at += 100) {
    for (const std::int32_t length : cycle) expected.push_back({at, kEveryHost, length}), at += 15;
  }
  EXPECT_EQ(air.frames, expected);
  EXPECT_EQ(air.now, at);
}

TEST(BroadcastSchedule, FollowsItsTunables) {
  const std::uint8_t pacing[14] = {30, 30, 100, 0, 1, 1, 5, 0, 4, 20, 6, 2, 2, 1};
  ZorSuite().SmartConfigV5_SetProperty(pacing, sizeof pacing);
  RecordingAir air;
  sendBroadcastBlock(air, buildPacketV5(inputs("\xFF")));
  EXPECT_EQ(air.lengths(), (std::vector<std::int32_t>{0,   0,   358, 358, 1,   1,          // syncs
                                                      118, 118, 2,   2,   309, 309, 3, 3,  // head, CRC 0xCF
                                                      103, 103, 4,   4,   102, 102, 5, 5,  // lengths 1 and 0
                                                      357, 357, 6,   6}));  // 0xFF, one below sync 2
  EXPECT_EQ(air.now, 26 * 4 + 20 + 6);

  s_ZorSmart5_BcTagRepeat = 0;
  s_ZorSmart5_BcDataRepeat = 0;
  RecordingAir silent;
  sendBroadcastBlock(silent, buildPacketV5(inputs("")));
  EXPECT_TRUE(silent.frames.empty());
  EXPECT_EQ(silent.now, 26);

  s_ZorSmart5_BcDataRepeat = 1;
  s_ZorSmart5_BcLen = 255;
  RecordingAir longest;
  sendBroadcastBlock(longest, buildPacketV5(inputs(std::string(32, 's'), std::string(64, 'p'))));
  EXPECT_EQ(longest.frames.size(), 200U);
  EXPECT_EQ(longest.frames.back().length, 255 + 2 + 99);
}

TEST(CycleV3, SendsMarkersThenPairsInTenMillisecondSteps) {
  RecordingAir air;
  EXPECT_EQ(sendCycleV3(air, buildPacketV3(inputs("")), NoSocket::endsCycle), CycleV3::through);
  EXPECT_EQ(air.frames, (std::vector<Frame>{{0, "239.90.0.0", 30},
                                            {10, "239.90.0.0", 30},
                                            {20, "239.90.0.0", 30},
                                            {30, "239.79.0.0", 31},
                                            {40, "239.82.0.0", 32}}));
  EXPECT_EQ(air.now, 70);

  RecordingAir longest;
  sendCycleV3(longest, buildPacketV3(inputs(std::string(32, 's'), std::string(64, 'p'))),
              NoSocket::endsCycle);
  ASSERT_EQ(longest.frames.size(), 53U);
  EXPECT_EQ(longest.frames.back(), (Frame{520, "239.82.112.0", 80}));
  EXPECT_EQ(longest.now, 550);
}

TEST(Schedules, NameTheFrameThatFoundNoSocket) {
  struct Case {
    std::int32_t code;
    int framesBefore;
    bool multicast;
  };
  const Case cases[] = {{-101, 0, true},  {-102, 1, true},  {-102, 2, true},  {-110, 3, true},
                        {-111, 6, true},  {-201, 0, false}, {-202, 1, false}, {-203, 2, false},
                        {-204, 3, false}, {-205, 4, false}};
  for (const Case& c : cases) {
    RecordingAir air;
    air.onFrame = noSocketAfter(c.framesBefore);
    const PacketV5 packet = buildPacketV5(inputs(""));
    const std::int32_t status = c.multicast ? sendMulticastBlock(air, packet, buildPacketV3(inputs("")))
                                            : sendBroadcastBlock(air, packet);
    EXPECT_EQ(status, c.code);
    EXPECT_EQ(air.frames.size(), static_cast<std::size_t>(c.framesBefore) + 1)
        << "nothing follows " << c.code;
  }
  RecordingAir alone;
  alone.onFrame = noSocketAfter(0);
  EXPECT_EQ(sendCycleV3(alone, buildPacketV3(inputs("")), NoSocket::goesOn), CycleV3::through);
  EXPECT_EQ(alone.frames.size(), 5U) << "a version 3 run of its own goes on without a socket";
}

TEST(Schedules, SendNothingMoreOnceCancelled) {
  for (std::size_t last = 1; last <= 9; ++last) {
    for (const bool multicast : {true, false}) {
      RecordingAir air;
      std::int64_t cancelledAt = -1;
      air.onFrame = [&](const Frame& frame) {
        air.isCancelled = air.frames.size() == last;
        cancelledAt = frame.ms;
        return frame.length;
      };
      const PacketV5 packet = buildPacketV5(inputs(""));
      EXPECT_EQ(multicast ? sendMulticastBlock(air, packet, buildPacketV3(inputs("")))
                          : sendBroadcastBlock(air, packet),
                0);
      EXPECT_EQ(air.frames.size(), last);
      EXPECT_EQ(air.now, cancelledAt);
    }
  }
}

}  // namespace
