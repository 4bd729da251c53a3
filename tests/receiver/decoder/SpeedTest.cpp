#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "ZOR/state/Paces.h"
#include "simulator/Airs.h"
#include "simulator/Random.h"
#include "simulator/SampleSecret.h"
#include "simulator/Trial.h"

namespace zor::simulator {
namespace {

double quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(share * static_cast<double>(values.size()))];
}

TEST(DecoderSpeed, IsThatOfTheBoundInQuietAirs) {
  const struct {
    const char* name;
    RadioConditions radio;
    const char* pace;
  } kAirs[] = {
      {"no loss", {}, "default"},
      {"30 %", {.loss = 0.3}, "default"},
      {"50 %", {.loss = 0.5}, "default"},
      {"bursts", {.loss = 0.3, .bursts = true}, "default"},
      {"multicast held", {.loss = 0.1, .held = Held::multicast, .holdUs = 300'000}, "default"},
      {"no pause", {.loss = 0.3}, "robust"},
  };
  const struct {
    const char* name;
    Channels channels;
    double median, p95;
  } kSent[] = {
      {"multicast", {true, false, false}, 1.05, 1.10},
      {"broadcast", {false, true, false}, 1.10, 1.10},
      {"both", {true, true, false}, 1.08, 1.10},
      {"both and version 3", {true, true, true}, 1.08, 1.10},
  };
  for (const auto& air : kAirs) {
    for (const auto& sent : kSent) {
      const PhonePlan plan =
          makePlan({"MyNetwork", "my-pass-1234", {}}, ZorFindPace(air.pace)->values, sent.channels);
      std::vector<double> decoder, bound;
      Scenario scenario{{{&plan}}, Environment()};
      scenario.environment.radio = air.radio;
      for (const Outcome& outcome : runTrials(scenario, 400)) {
        decoder.push_back(outcome.decoderSeconds);
        bound.push_back(outcome.boundSeconds);
        EXPECT_TRUE(outcome.wrong.empty());
      }
      SCOPED_TRACE(std::string(air.name) + ", " + sent.name);
      EXPECT_LE(quantile(decoder, 0.5), quantile(bound, 0.5) * sent.median);
      EXPECT_LE(quantile(decoder, 0.95), quantile(bound, 0.95) * sent.p95);
    }
  }
}

std::string randomText(std::int64_t length, Random& random) {
  std::string text;
  while (length-- > 0) text += static_cast<char>('a' + random.below(26));
  return text;
}

TEST(DecoderSpeed, IsKeptInDisturbedAirsAndRunsAreNotMixed) {
  constexpr Channels kMulticast = {true, false, false};
  constexpr Channels kBroadcast = {false, true, false};
  constexpr Channels kBoth = {true, true, false};
  constexpr Channels kAll = {true, true, true};
  const struct {
    const char* air;
    Channels channels;
    double median, p95;  ///< Seconds.
    int mixed;  ///< At most: runs in which nothing but a CRC kept the decoder from wrong credentials.
  } kCases[] = {
      {"held 300 ms", kBroadcast, 3.22, 6.71, 1},
      {"held 300 ms", kBoth, 0.84, 2.11, 1},
      {"jitter 6 ms", kBroadcast, 5.57, 13.3, 1},
      {"stalls 80 ms", kBroadcast, 4.26, 19.7, 1},
      {"stalls 80 ms", kMulticast, 1.06, 6.95, 1},
      {"chatter 5/s", kBroadcast, 4.10, 7.90, 1},
      {"chatter 16/s", kBroadcast, 4.91, 14.2, 1},
      {"chatter 16/s", kBoth, 0.74, 2.39, 1},
      {"chatter 5/s + held 300 ms", kBroadcast, 10.3, 22.6, 3},
      {"both directions", kMulticast, 0.72, 2.27, 1},
      {"both directions", kBroadcast, 3.93, 7.45, 1},
      {"both directions + repeats", kBoth, 0.63, 1.80, 1},
      {"both directions + held 300 ms", kAll, 1.93, 5.50, 1},
      {"corrected within 60 ms", kBroadcast, 2.74, 5.95, 1},
      {"corrected within 60 ms", kMulticast, 0.86, 2.98, 1},
      {"corrected within 60 ms", kAll, 0.68, 2.22, 1},
      {"corrected within 5 s + held 300 ms", kBroadcast, 3.62, 10.6, 3},
      {"corrected within 5 s + held 300 ms", kAll, 0.85, 2.01, 1},
  };
  for (const auto& test : kCases) {
    Scenario scenario{{}, findAir(test.air)->environment, Listens::anyTime, 1};
    scenario.environment.radio.loss = 0.3;
    std::vector<double> seconds;
    int mixed = 0;
    for (std::uint64_t home = 1; home <= 20; ++home) {
      Random random(home);
      const Secret secret{randomText(random.below(20), random), randomText(8, random), {1, 2}};
      const Pace& pace = ZorFindPace(home % 2 == 0 ? "default" : "robust")->values;
      const PhonePlan plan = makePlan(secret, pace, test.channels);
      const PhonePlan earlier = makePlan(mistyped(secret), pace, test.channels);
      scenario.phones = {{&plan, &earlier}};
      for (const Outcome& outcome : runTrials(scenario, 20, home)) {
        seconds.push_back(outcome.decoderSeconds);
        mixed += outcome.stoppedByCrc || !outcome.wrong.empty() ? 1 : 0;
      }
    }
    SCOPED_TRACE(std::string(test.air));
    EXPECT_LE(quantile(seconds, 0.5), test.median);
    EXPECT_LE(quantile(seconds, 0.95), test.p95);
    EXPECT_LE(mixed, test.mixed);
  }
}

}  // namespace
}  // namespace zor::simulator
