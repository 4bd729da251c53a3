#include "receiver/decoder/TwoOverheads.h"

#include <gtest/gtest.h>

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
  std::string changes;  ///< Where takeChange() was true: + for begun, - for ceased.
  std::string sorted;  ///< Of each frame: p(air), P(air, late), s(ingle), r(epetition); others are not shown.
  std::int64_t time = 0;
  int number = 0;

  void hear(std::int64_t at, int length, To to) {
    const auto group = static_cast<std::uint8_t>(number);
    const MacAddress data = {1, 0, 0x5e, 111, group, group}, sync = {1, 0, 0x5e, 122, 111, 114};
    const MacAddress everyone = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    const auto result = overheads.observe({at,
                                           {},
                                           to == To::data   ? data
                                           : to == To::sync ? sync
                                                            : everyone,
                                           length});
    if (overheads.takeChange()) changes += overheads.active() ? '+' : '-';
    if (!overheads.active()) return;
    sorted += !result ? 'r' : result->isSingle ? 's' : result->isLate ? 'P' : 'p';
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
    std::string changes, sorted;
    bool active;
    int step = 0;
  } kCases[] = {
      {"one copy", {{1, 8}, {1, kNone}}, "", "", false},
      {"two copies", {{3, 8}}, "+", "sp", true, 8},
      {"two copies, the longer ones first", {{3, -16}}, "+", "sp", true, 16},
      {"two copies of different steps", {{1, 8}, {1, 9}, {1, kNone}}, "", "", false},
      {"too long a step", {{3, 65}}, "", "", false},
      {"too late for a relay", {{3, 8, 7}}, "", "", false},
      {"four copies of broadcasts", {{5, 8, 2, To::everyone}}, "", "", false},
      {"five copies of broadcasts", {{6, 8, 2, To::everyone}}, "+", "sp", true, 8},
      {"held copies of sync frames", {{1, 8, 25, To::sync}}, "+", "s", true, 8},
      {"sync frames of two runs",
       {{1, kNone, 0, To::sync}, {20, kNone}, {1, kNone, 0, To::sync}},
       "",
       "",
       false},
      {"repetitions", {{3, 8}, {2, 0}}, "+", "spsrsr", true, 8},
      {"single copies", {{3, 8}, {2, kNone}, {1, 8}}, "+", "spsssp", true, 8},
      {"another step for once",
       {{3, 8}, {1, 12}, {1, kNone}, {1, 8}},
       "+",
       "spsss"
       "sp",
       true,
       8},
      {"too many single copies", {{3, 8}, {97, kNone}}, "+-", "sp" + kSingles + "ssssss", false},
      {"single copies, then a pair",
       {{3, 8}, {90, kNone}, {1, 8}, {90, kNone}},
       "+",
       "sp" + kSingles + "sp" + kSingles,
       true,
       8},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    Air air;
    for (const Stretch& stretch : test.heard) air.send(stretch);
    EXPECT_EQ(air.changes, test.changes);
    EXPECT_EQ(air.sorted, test.sorted);
    EXPECT_EQ(air.overheads.active(), test.active);
    EXPECT_EQ(test.active ? air.overheads.step() : 0, test.step);
  }
}

TEST(TwoOverheads, KnowsWhetherTheCopiesAreHeld) {
  Air air;
  air.send({3, 8});
  air.send({5, 8, 20});
  EXPECT_FALSE(air.overheads.holds());
  air.send({2, 8, 20});
  EXPECT_TRUE(air.overheads.holds());
  EXPECT_EQ(air.sorted,
            "spssssssssss"
            "sPsP");
  air.send({1, 8});
  EXPECT_FALSE(air.overheads.holds());
}

}  // namespace
}  // namespace zor::receiver
