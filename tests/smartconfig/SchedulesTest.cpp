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

zor::SenderInputs inputs(const std::string& ssid, const std::string& password = "") {
  zor::SenderInputs inputs;
  ssid.copy(inputs.ssid, sizeof inputs.ssid - 1);
  password.copy(inputs.password, sizeof inputs.password - 1);
  return inputs;
}

using Frames = std::vector<Frame>;

const std::string kMaxSsid(32, 's'), kMaxPassword(64, 'p');

/// A block of the multicast channel, with version 3 frames mixed in or not, or of the broadcast channel, or a
/// cycle of version 3.
enum class Block { multicast, mixed, broadcast, version3 };

std::int32_t send(RecordingAir& air, Block block, const std::string& ssid = "",
                  const std::string& password = "") {
  const zor::SenderInputs texts = inputs(ssid, password);
  const PacketV5 packet = buildPacketV5(texts);
  const PacketV3 older = buildPacketV3(texts);
  if (block == Block::version3)
    return sendCycleV3(air, older, NoSocket::endsCycle) == CycleV3::through ? 0 : -1;
  if (block == Block::broadcast) return sendBroadcastBlock(air, packet);
  return sendMulticastBlock(air, packet, block == Block::mixed ? older : PacketV3());
}

/// All that a block puts on the air.
RecordingAir sent(Block block, const std::string& ssid = "", const std::string& password = "") {
  RecordingAir air;
  EXPECT_EQ(send(air, block, ssid, password), 0);
  return air;
}

/// Every frame of `frames` fails as if no socket could be opened once `count` have gone through.
auto noSocketAfter(std::size_t count) {
  return [count](const Frame& frame) mutable { return count-- > 0 ? frame.length : -1; };
}

TEST(MulticastSchedule, SendsSyncThenTheEmptyPacketFiveTimes) {
  const RecordingAir air = sent(Block::multicast);
  Frames expected;
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
  EXPECT_EQ(sent(Block::multicast, "abc").frames, (Frames{{0, "239.122.111.114", 30},
                                                          {30, "239.111.16.240", 30},
                                                          {60, "239.114.3.0", 31},
                                                          {90, "239.111.97.98", 32},
                                                          {120, "239.114.99.0", 33}}));
  const RecordingAir longest = sent(Block::multicast, kMaxSsid, kMaxPassword);
  ASSERT_EQ(longest.frames.size(), 51U);
  EXPECT_EQ(longest.frames.back(), (Frame{1500, "239.114.112.112", 79}));
}

TEST(MulticastSchedule, FollowsItsTunables) {
  const std::uint8_t pacing[14] = {0, 7, 50, 9, 2, 2, 2, 30, 15, 100, 0, 1, 1, 5};
  ZorSuite().SmartConfigV5_SetProperty(pacing, sizeof pacing);
  const RecordingAir air = sent(Block::multicast);
  EXPECT_EQ(air.lengths(), (std::vector<std::int32_t>{0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 0, 1}));
  EXPECT_EQ(air.frames[6].ms, 6 * 7 + 50);
  EXPECT_EQ(air.now, 2 * (6 * 7 + 50) + 9);

  s_ZorSmart5_McTagRepeat = 0;
  EXPECT_EQ(sent(Block::multicast).frames.front().destination, "239.111.16.0");

  s_ZorSmart5_McLoopRepeat = 0;
  const RecordingAir silent = sent(Block::multicast);
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
  send(air, Block::multicast);
  EXPECT_EQ(air.lengths(), (std::vector<std::int32_t>{30, 30, 101, 100, 100, 100, 100, 101}));
  EXPECT_EQ(air.frames[2].ms, 35);
  EXPECT_EQ(air.frames[3].ms, 140);
}

TEST(MulticastSchedule, MixesVersion3FramesInAfterEachCycle) {
  s_ZorSmart5_McLoopRepeat = 1;
  s_ZorSmart5_McLen = 60;
  RecordingAir air;
  EXPECT_EQ(sendMulticastBlock(air, buildPacketV5(inputs("")), buildPacketV3(inputs("a"))), 0);
  EXPECT_EQ(air.frames, (Frames{{0, "239.122.111.114", 60},
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
  const RecordingAir air = sent(Block::broadcast);
  const std::int32_t cycle[] = {30, 388, 31, 148, 32, 132, 33, 132, 34, 132, 35};
  Frames expected;
  std::int64_t at = 0;
  for (int repeat = 0; repeat < 5; ++repeat, at += 100) {
    for (const std::int32_t length : cycle) {
      expected.push_back({at, "255.255.255.255", length});
      at += 15;
    }
  }
  EXPECT_EQ(air.frames, expected);
  EXPECT_EQ(air.now, at);
}

TEST(BroadcastSchedule, FollowsItsTunables) {
  const std::uint8_t pacing[14] = {30, 30, 100, 0, 1, 1, 5, 0, 4, 20, 6, 2, 2, 1};
  ZorSuite().SmartConfigV5_SetProperty(pacing, sizeof pacing);
  const RecordingAir air = sent(Block::broadcast, "\xFF");
  EXPECT_EQ(air.lengths(), (std::vector<std::int32_t>{0,   0,   358, 358, 1,   1,          // syncs
                                                      118, 118, 2,   2,   309, 309, 3, 3,  // head, CRC 0xCF
                                                      103, 103, 4,   4,   102, 102, 5, 5,  // lengths 1 and 0
                                                      357, 357, 6,   6}));  // 0xFF, one below sync 2
  EXPECT_EQ(air.now, 26 * 4 + 20 + 6);

  s_ZorSmart5_BcTagRepeat = 0;
  s_ZorSmart5_BcDataRepeat = 0;
  const RecordingAir silent = sent(Block::broadcast);
  EXPECT_TRUE(silent.frames.empty());
  EXPECT_EQ(silent.now, 26);

  s_ZorSmart5_BcDataRepeat = 1;
  s_ZorSmart5_BcLen = 255;
  const RecordingAir longest = sent(Block::broadcast, kMaxSsid, kMaxPassword);
  EXPECT_EQ(longest.frames.size(), 200U);
  EXPECT_EQ(longest.frames.back().length, 255 + 2 + 99);
}

TEST(CycleV3, SendsMarkersThenPairsInTenMillisecondSteps) {
  const RecordingAir air = sent(Block::version3);
  EXPECT_EQ(air.frames, (Frames{{0, "239.90.0.0", 30},
                                {10, "239.90.0.0", 30},
                                {20, "239.90.0.0", 30},
                                {30, "239.79.0.0", 31},
                                {40, "239.82.0.0", 32}}));
  EXPECT_EQ(air.now, 70);

  const RecordingAir longest = sent(Block::version3, kMaxSsid, kMaxPassword);
  ASSERT_EQ(longest.frames.size(), 53U);
  EXPECT_EQ(longest.frames.back(), (Frame{520, "239.82.112.0", 80}));
  EXPECT_EQ(longest.now, 550);
}

TEST(Schedules, NameTheFrameThatFoundNoSocket) {
  const struct {
    std::int32_t code;
    std::size_t framesBefore;
  } kCases[] = {{-101, 0}, {-102, 1}, {-102, 2}, {-110, 3}, {-111, 6},
                {-201, 0}, {-202, 1}, {-203, 2}, {-204, 3}, {-205, 4}};
  for (const auto& [code, framesBefore] : kCases) {
    RecordingAir air;
    air.onFrame = noSocketAfter(framesBefore);
    EXPECT_EQ(send(air, code > -200 ? Block::mixed : Block::broadcast), code);
    EXPECT_EQ(air.frames.size(), framesBefore + 1) << "nothing follows " << code;
  }
  RecordingAir version3;
  version3.onFrame = noSocketAfter(0);
  EXPECT_EQ(sendCycleV3(version3, buildPacketV3(inputs("")), NoSocket::isIgnored), CycleV3::through);
  EXPECT_EQ(version3.frames.size(), 5U) << "a version 3 run continues without a socket";
}

TEST(Schedules, SendNothingMoreOnceCancelled) {
  for (std::size_t last = 1; last <= 9; ++last) {
    for (const Block block : {Block::mixed, Block::broadcast}) {
      RecordingAir air;
      std::int64_t cancelledAt = -1;
      air.onFrame = [&](const Frame& frame) {
        air.isCancelled = air.frames.size() == last;
        cancelledAt = frame.ms;
        return frame.length;
      };
      EXPECT_EQ(send(air, block), 0);
      EXPECT_EQ(air.frames.size(), last);
      EXPECT_EQ(air.now, cancelledAt);
    }
  }
}

}  // namespace
