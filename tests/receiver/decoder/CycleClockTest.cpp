#include "receiver/decoder/CycleClock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zor::receiver {
namespace {

constexpr std::int64_t kMs = 1000;

/// Frames from one index to another, the first at a time in milliseconds.
struct Row {
  int first, last;
  double begin, pace = 30;
};

/// The letter of each fit, in the order of the enumerators.
std::string follow(CycleClock& clock, const std::vector<Row>& rows) {
  std::string fits;
  for (const Row& row : rows) {
    for (int index = row.first; index <= row.last; ++index) {
      const double time = row.begin + (index - row.first) * row.pace;
      const auto fit = clock.observe(index, static_cast<std::int64_t>(time * static_cast<double>(kMs)));
      fits += "sgcnbot"[static_cast<std::size_t>(fit)];
    }
  }
  return fits;
}

TEST(CycleClock, SaysHowEachFrameFits) {
  const struct {
    const char* name;
    std::vector<Row> rows;
    std::string fits;  ///< And what the clock is in the end.
  } kCases[] = {
      {"five in a row are not steady", {{0, 4, 0}}, "sgggg"},
      {"six are", {{0, 5, 0}}, "sggggg steady"},
      {"six of which some are lost between", {{0, 2, 0}, {5, 6, 150}, {9, 9, 270}}, "sggggg steady"},
      {"11 ms late", {{0, 5, 0}, {6, 6, 191}}, "sgggggg steady"},
      {"13 ms late", {{0, 5, 0}, {6, 6, 193}}, "sgggggo steady"},
      {"late frames move the grid a little", {{0, 5, 0}, {6, 6, 191}, {7, 7, 203}}, "sggggggg steady"},
      {"a stray ends a row of eight", {{0, 7, 0}, {8, 8, 225}, {9, 9, 270}}, "sgggggggog"},
      {"a stray does not end a row of twelve",
       {{0, 11, 0}, {12, 12, 345}, {13, 13, 390}},
       "sgggggggggggog steady"},
      {"three strays end a row of 21",
       {{0, 20, 0}, {21, 21, 615}, {22, 22, 660}, {23, 23, 675}, {24, 24, 720}, {25, 25, 735}, {26, 26, 780}},
       "sggggggggggggggggggggogogog"},
      {"cycles", {{0, 5, 0}, {0, 1, 300}, {0, 1, 600}}, "sgggggoncg steady"},
      {"a cycle was lost", {{0, 5, 0}, {0, 1, 300}, {0, 1, 900}}, "sgggggoncg steady"},
      {"a cycle was lost at first", {{0, 5, 0}, {0, 1, 600}, {0, 1, 900}}, "sgggggonoc steady"},
      {"65 cycles were lost", {{0, 5, 0}, {0, 1, 300}, {0, 1, 20'100}}, "sgggggonob"},
      {"copies of a cycle's first",
       {{0, 5, 0}, {0, 0, 300}, {0, 0, 301}, {0, 0, 302}, {0, 1, 303, 27}},
       "sgggggoooon steady"},
      {"another run", {{0, 5, 0}, {0, 1, 300}, {0, 1, 700}}, "sgggggonob"},
      {"another run that is ahead", {{0, 5, 0}, {9, 10, 180}}, "sgggggob"},
      {"four outliers", {{0, 5, 0}, {3, 3, 205}, {1, 1, 222}, {4, 4, 240}, {2, 2, 261}}, "sgggggooob"},
      {"another pace", {{0, 6, 0, 10}}, "soggggg steady"},
      {"a pace too fast to follow", {{0, 3, 0, 2}}, "sooo"},
      {"the fastest", {{0, 7, 0, 3}}, "sogggggg steady"},
      {"the fastest, with jitter",
       {{0, 3, 0, 3}, {4, 5, 14, 1}, {6, 7, 18, 3}, {8, 9, 27, 1}, {10, 12, 30, 3}},
       "soggggggggggg steady"},
      {"the next cycle shows the pace",
       {{12, 13, 0, 12}, {0, 3, 24, 12}, {0, 1, 192, 12}},
       "soonggcg steady"},
      {"a pace that does not repeat", {{0, 0, 0}, {1, 1, 10}, {2, 2, 25}}, "soo"},
      {"a pace that repeats off the first frame's grid", {{0, 1, 0}, {2, 2, 90}, {3, 3, 150}}, "sgoo"},
      {"the pace of the second cycle",
       {{0, 2, 0, 11.4}, {20, 20, 528}, {23, 23, 564}, {0, 1, 576, 12}},
       "sogoncg"},
      {"a measured pace", {{0, 20, 0, 31}, {40, 40, 1240}}, "sggggggggggggggggggggg steady"},
      {"a burst", {{0, 9, 0, 1}}, "sooonooont timeless"},
      {"small bursts", {{0, 1, 0, 5}, {2, 3, 45, 5}, {4, 5, 90, 5}}, "sobobt timeless"},
      {"after a burst only silence counts",
       {{0, 9, 0, 1}, {0, 9, 100, 1}, {9, 9, 2'108}, {10, 11, 4'109}},
       "sooonooontgggggggggggbg timeless"},
  };
  for (const auto& test : kCases) {
    CycleClock clock(30 * kMs, true);
    std::string fits = follow(clock, test.rows);
    if (clock.steady()) fits += " steady";
    if (clock.timeless()) fits += " timeless";
    EXPECT_EQ(fits, test.fits) << test.name;
  }
}

TEST(CycleClock, GivesUpWhereNoTimetableExplainsTheCycles) {
  CycleClock clock(30 * kMs, true);
  int cycles = 0;
  for (; !clock.timeless() && cycles < 20; ++cycles)
    follow(clock, {{0, 1, 300.0 * cycles + 17 * cycles * cycles}});
  EXPECT_EQ(cycles, 10);
}

TEST(CycleClock, DoesNotTakeTwoSendersForBursts) {
  CycleClock clock(30 * kMs, true);
  for (int i = 0; i < 20; ++i) follow(clock, {{i, i, 30.0 * i}, {i + 10, i + 10, 30.0 * i + 5}});
  EXPECT_FALSE(clock.timeless());
}

TEST(CycleClock, SettlesOutliersThatAreOfTheRun) {
  const struct {
    const char* name;
    std::vector<Row> rows;
    bool settled;
  } kCases[] = {
      {"late, in its place", {{0, 5, 0}, {6, 6, 200}, {7, 7, 210}}, true},
      {"late at the end of a cycle", {{0, 5, 0}, {0, 1, 300}, {5, 5, 485}, {0, 0, 600}}, true},
      {"late at the beginning of a cycle", {{0, 5, 0}, {0, 5, 300}, {0, 0, 620}, {1, 1, 630}}, true},
      {"the first of a cycle", {{0, 5, 0}, {0, 1, 300}}, true},
      {"the first of a run that is ahead", {{0, 5, 0}, {3, 3, 200}, {7, 7, 320}}, true},
      {"late, before one of the last index", {{0, 5, 0}, {0, 5, 300}, {6, 6, 500}, {5, 5, 750}}, true},
      {"a stranger", {{0, 5, 0}, {3, 3, 165}, {6, 6, 180}}, false},
      {"a frame on the grid", {{0, 6, 0}}, false},
      {"the outlier itself", {{0, 5, 0}, {6, 6, 200}}, false},
  };
  for (const auto& test : kCases) {
    CycleClock clock(30 * kMs, false);
    follow(clock, test.rows);
    EXPECT_EQ(clock.hasSettledOutlier(), test.settled) << test.name;
  }
}

TEST(CycleClock, NoticesBurstsOfOtherFrames) {
  const auto timelessAfter = [](int before, int evenSteps, int closeFrames, int bursts) {
    CycleClock clock(30 * kMs, true);
    for (int i = 0; i < before; ++i) clock.noteBurst();
    follow(clock, {{0, evenSteps, 0}});
    for (int i = 0; i < closeFrames; ++i) clock.noteCloseFrames();
    for (int i = 0; i < bursts; ++i) clock.noteBurst();
    return clock.timeless();
  };
  EXPECT_TRUE(timelessAfter(3, 0, 0, 1));
  EXPECT_FALSE(
      timelessAfter(3, 7, 0, 2));  // The first ends the steady row; even steps make up for the second.
  EXPECT_TRUE(timelessAfter(3, 7, 0, 3));
  EXPECT_FALSE(timelessAfter(3, 12, 0, 3));  // A long even row is no burst.
  EXPECT_FALSE(timelessAfter(3, 0, 9, 0));   // One of two close frames may be a stray.
  EXPECT_FALSE(timelessAfter(3, 7, 9, 1));
  EXPECT_FALSE(timelessAfter(0, 0, 5, 1));
  EXPECT_TRUE(timelessAfter(0, 0, 6, 1));
}

TEST(CycleClock, TellsIndicesAtTimes) {
  CycleClock clock(30 * kMs, true);
  follow(clock, {{0, 5, 0}, {0, 5, 300}});
  EXPECT_EQ(clock.indexAt(487 * kMs, 7 * kMs), 6);
  EXPECT_FALSE(clock.indexAt(488 * kMs, 7 * kMs));
  EXPECT_EQ(clock.indexAt(263 * kMs, 7 * kMs), -1);
  EXPECT_EQ(clock.indexInAnyCycle(963 * kMs, 7 * kMs), 2);
  EXPECT_TRUE(clock.fits(2, 970 * kMs));
  EXPECT_FALSE(clock.fits(2, 975 * kMs));
}

TEST(CycleClock, KnowsWhichPeriodExplainsTheCycles) {
  const struct {
    const char* name;
    std::vector<Row> rows;
    bool by300, by200;
  } kCases[] = {
      {"one cycle", {{0, 5, 0}}, true, true},
      {"two", {{0, 5, 0}, {0, 1, 300}}, true, false},
      {"one was lost", {{0, 5, 0}, {0, 1, 600}}, true, true},
      {"an outlier in its place", {{0, 5, 0}, {0, 0, 300}}, true, false},
      {"a confirmed period of its own", {{0, 5, 0}, {0, 1, 270}, {0, 1, 540}}, true, true},
  };
  for (const auto& test : kCases) {
    CycleClock clock(30 * kMs, true);
    follow(clock, test.rows);
    EXPECT_EQ(clock.explainedBy(200 * kMs, 100 * kMs), test.by300) << test.name;
    EXPECT_EQ(clock.explainedBy(200 * kMs, 0), test.by200) << test.name;
  }
}

TEST(CycleClock, RemembersTheLatestSilence) {
  CycleClock clock(30 * kMs, true);
  follow(clock, {{0, 5, 0}, {0, 5, 2'149}});
  EXPECT_FALSE(clock.silenceEnd());
  follow(clock, {{0, 5, 4'300}});
  EXPECT_EQ(clock.silenceEnd(), 4'300 * kMs);
}

}  // namespace
}  // namespace zor::receiver
