#include "receiver/decoder/BroadcastChannel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace zor::receiver {
namespace {

/// SSID "qkits", pass phrase "X36b".
const std::string kPacket = "\x10\x09\x05\x04qkitsX36b";

/// A phone whose broadcasts have the base 72 and come every 15 ms.
struct Air {
  BroadcastChannel channel;
  PacketEvidence evidence;
  std::int64_t time = 0;

  static int value(int index) { return 72 + 102 + kPacket[static_cast<std::size_t>(index)]; }
  static int position(int index) { return 72 + 2 + index; }

  void hear(int length, std::int64_t milliseconds = 15) {
    time += milliseconds * 1'000;
    channel.observe(length, time, evidence);
  }
  void hearSyncs() {
    for (const int offset : {0, 358, 1}) hear(72 + offset);
  }
  /// Value and position frames, the first of them `lead` ms earlier.
  void hearBytes(int from, int to, std::int64_t lead = 0, std::int64_t gap = 15) {
    for (int index = from; index < to; ++index, lead = 0) {
      hear(value(index), gap - lead);
      hear(position(index), gap);
    }
  }
  /// Pieces as another source has shown them.
  void know(int from, int to, Source source) {
    for (int i = from; i < to; ++i)
      evidence.add(i, static_cast<std::uint8_t>(kPacket[static_cast<std::size_t>(i)]), {0, source});
  }
};

TEST(BroadcastChannel, NoticesStrays) {
  // After a position, a value between two slots; no frame's length; a position again.
  for (const auto& [length, isStray] : {std::pair{300, true}, {500, true}, {Air::position(10), false}}) {
    Air air;
    air.hearSyncs();
    air.hearBytes(0, 11);
    air.hear(length, 5);
    air.hearBytes(11, 13, 5);
    EXPECT_EQ(air.evidence.byteAt(Encoding::version5, 9), 'X') << length;
    EXPECT_NE(air.evidence.excludes(9, 'Y'), isStray) << length;  // Among strays it takes two sightings.
  }
}

TEST(BroadcastChannel, PlacesByOrderWhatComesBeforeASyncFrame) {
  Air air;
  air.hearSyncs();
  air.know(0, 4, Source::group);
  air.hear(Air::position(11));
  air.hear(Air::value(12));
  air.hear(72, 130);
  EXPECT_EQ(air.evidence.byteAt(Encoding::version5, 12), 'b');
}

TEST(BroadcastChannel, ForgetsWhatMisleadingTimesHavePlaced) {
  const auto isForgotten = [](const auto& hear) {
    Air air;
    air.hearSyncs();
    air.know(9, 10, Source::length);
    hear(air);
    return air.channel.clock().timeless() && !air.evidence.byteAt(Encoding::version5, 9);
  };
  const auto hearPairs = [](int pairs) {
    return [=](Air& air) {
      for (int i = 0; i < 2 * pairs; ++i) air.hear(Air::value(i % 2), i % 2 == 0 ? 30 : 3);
      air.hear(300, 3);
    };
  };
  EXPECT_TRUE(isForgotten(hearPairs(6)));
  EXPECT_FALSE(isForgotten(hearPairs(4)));
  EXPECT_TRUE(isForgotten([](Air& air) {
    for (int index = 0; index < 6; ++index) air.hear(Air::position(index), index % 2 == 0 ? 45 : 5);
  }));
}

TEST(BroadcastChannel, FindsItsBaseFromFramesInSuccession) {
  for (const std::int64_t gap : {15, 30}) {
    Air air;
    air.know(0, 13, Source::group);
    air.hearBytes(4, 10, 0, gap);
    air.channel.findBase(air.evidence, {});
    EXPECT_EQ(air.channel.base().has_value(), gap == 15);
    air.know(14, 15, Source::length);
    if (gap == 15) {  // Somebody else's frames that look like sync 2 and 3 do not change it.
      air.hear(600);
      air.hear(243);
      EXPECT_EQ(air.channel.base(), 72);
      continue;
    }
    air.hearSyncs();  // What another base has placed means nothing.
    EXPECT_FALSE(air.evidence.byteAt(Encoding::version5, 14));
  }
}

TEST(BroadcastChannel, FindsTheLengthOfASingleCopy) {
  Air air;
  air.hearSyncs();
  air.hearBytes(0, 8);
  const auto shorter = [&](int length, std::int64_t milliseconds) {
    return air.channel.shorterLength(length, 2, air.time + milliseconds * 1'000, air.evidence);
  };
  EXPECT_EQ(shorter(Air::position(8) + 2, 30), Air::position(8));
  EXPECT_EQ(shorter(Air::position(8), 30), Air::position(8));
  EXPECT_FALSE(shorter(Air::position(9), 30));
  EXPECT_EQ(shorter(Air::value(7) + 2, -15), Air::value(7));
  EXPECT_FALSE(shorter(Air::value(8), 15));
  EXPECT_EQ(shorter(Air::value(8) + 2, 15), Air::value(8));  // Both copies have been heard.
}

}  // namespace
}  // namespace zor::receiver
