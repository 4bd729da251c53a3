#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ZOR/state/Paces.h"
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

}  // namespace
}  // namespace zor::simulator
