#include "receiver/decoder/TwoOverheads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace zor::receiver {
namespace {

constexpr std::int64_t kMs = 1000;
constexpr int kNone = -1'000;

enum class To { data, sync, everyone };

/// Frames of a run, one each 30 ms, with their copies. Every frame has another length, except sync frames.
struct Stretch {
  int frames;
  int step;                ///< Length of the copy less that of the frame; kNone: there is no copy.
  std::int64_t after = 2;  ///< ms from the frame to its copy.
  To to = To::data;
};

/// An air in which the stretches follow each other.
struct Air {
  TwoOverheads overheads;
  /// Each frame: p(air), s(ingle), r(epetition); + where two lengths have begun, - where they have ceased.
  /// Other frames are not shown.
  std::string sorted;
  std::int64_t time = 0;
  int number = 0;

  void hear(std::int64_t at, int length, To to) {
    const auto group = static_cast<std::uint8_t>(number);
    const MacAddress sync = {1, 0, 0x5e, 122, 111, 114}, data = {1, 0, 0x5e, 111, group, group};
    const MacAddress everyone = {255, 255, 255, 255, 255, 255};
    const auto& destination = to == To::data ? data : to == To::sync ? sync : everyone;
    const auto result = overheads.observe({at, {}, destination, length});
    if (overheads.takeChange()) sorted += overheads.active() ? '+' : '-';
    if (!overheads.active()) return;
    sorted += !result ? 'r' : result->isSingle ? 's' : 'p';
    if (!result || result->isSingle) return;
    EXPECT_EQ(result->frame.frameLength, to == To::sync ? 70 : 70 + number);
    EXPECT_EQ(result->frame.timeMicroseconds, time);
  }

  void send(const Stretch& stretch) {
    for (int i = 0; i < stretch.frames; ++i, time += 30 * kMs, number = (number + 1) % 50) {
      const int length = stretch.to == To::sync ? 70 : 70 + number;
      const int lower = stretch.step == kNone ? 0 : std::min(stretch.step, 0);
      hear(time, length - lower, stretch.to);
      if (stretch.step != kNone) hear(time + stretch.after * kMs, length - lower + stretch.step, stretch.to);
    }
  }
};

TEST(TwoOverheads, FindsTheStepAndPairsTheCopies) {
  const std::string kSingles(90, 's');
  const struct {
    const char* name;
    std::vector<Stretch> heard;
    std::string sorted;
    int step = 0;
  } kCases[] = {
      {"one copy", {{1, 8}, {1, kNone}}, ""},
      {"two copies", {{3, 8}}, "+sp", 8},
      {"the longer copies first", {{3, -16}}, "+sp", 16},
      {"copies of two steps", {{1, 8}, {1, 9}, {1, kNone}}, ""},
      {"too long a step", {{3, 65}}, ""},
      {"too late for a relay", {{3, 8, 7}}, ""},
      {"four copies of broadcasts", {{5, 8, 2, To::everyone}}, ""},
      {"five copies of broadcasts", {{6, 8, 2, To::everyone}}, "+sp", 8},
      {"held copies of sync frames", {{1, 8, 25, To::sync}}, "+s", 8},
      {"repetitions", {{3, 8}, {2, 0}}, "+spsrsr", 8},
      {"single copies", {{3, 8}, {2, kNone}, {1, 8}}, "+spsssp", 8},
      {"another step for once", {{3, 8}, {1, 12}, {1, kNone}, {1, 8}}, "+spssssp", 8},
      {"too many single copies", {{3, 8}, {97, kNone}}, "+sp" + kSingles + "ssssss-"},
      {"single copies, then a pair",
       {{3, 8}, {90, kNone}, {1, 8}, {90, kNone}},
       "+sp" + kSingles + "sp" + kSingles,
       8},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    Air air;
    for (const Stretch& stretch : test.heard) air.send(stretch);
    EXPECT_EQ(air.sorted, test.sorted);
    EXPECT_EQ(air.overheads.active() ? air.overheads.step() : 0, test.step);
  }
}

TEST(TwoOverheads, KnowsWhetherTheCopiesAreHeld) {
  Air air;
  air.send({3, 8});
  air.send({5, 8, 20});
  EXPECT_FALSE(air.overheads.holds());
  air.send({2, 8, 20});
  EXPECT_TRUE(air.overheads.holds());
  // Each copy belongs to the latest frame that has none.
  air.send({1, kNone, 0, To::sync});
  air.send({2, 8, 20, To::sync});
  EXPECT_EQ(air.sorted, "+spssssssssssspspsspsp");
  air.send({1, 8});
  EXPECT_FALSE(air.overheads.holds());
}

TEST(TwoOverheads, PairsNoBroadcastsOfABurst) {
  Air air;
  air.send({6, 8, 2, To::everyone});
  for (const int length : {200, 300, 308}) air.hear(air.time += 2 * kMs, length, To::everyone);
  EXPECT_EQ(air.sorted, "+spsss");
}

}  // namespace
}  // namespace zor::receiver
