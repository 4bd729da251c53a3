// Searches for pacing that provisions faster than the default, in virtual time: varies one value after the
// other and keeps what helps, within limits for the intervals and for the time on the air.

#include <algorithm>
#include <cmath>
#include <iostream>

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

using simulator::Channels;
using simulator::Environment;
using simulator::makePlan;
using simulator::Pace;
using simulator::PhonePlan;
using simulator::Secret;

struct Limits {
  int minInterval = 8;
  double maxAirTime = 0.5;
};

struct Case {
  const Secret* secret;
  Channels channels;
  Environment environment;
};

/// What a pace is scored by: both channels through every kind of air, and each channel by itself, because
/// some access points pass on only one.
std::vector<Case> makeCases(const std::vector<int>& lossPercents) {
  std::vector<Case> cases;
  for (const NamedSecret& packet : secrets()) {
    for (const int loss : lossPercents) {
      for (const NamedAir& air : quietAirs()) {
        cases.push_back({&packet.secret, {true, true, false}, withLoss(air.environment, loss)});
      }
      cases.push_back(
          {&packet.secret, {true, false, false}, withLoss(quietAirs().front().environment, loss)});
      cases.push_back(
          {&packet.secret, {false, true, false}, withLoss(quietAirs().front().environment, loss)});
    }
  }
  return cases;
}

/// Returns the 95th percentiles of the cases, seconds: of the decoder or of the bound.
std::vector<double> measure(const Pace& pace, const std::vector<Case>& cases, int runs, bool bound) {
  std::vector<double> seconds;
  for (const Case& one : cases) {
    const PhonePlan phone = makePlan(*one.secret, pace, one.channels);
    const Summary summary = summarize(simulator::runTrials({{{&phone}}, one.environment}, runs));
    seconds.push_back(bound ? summary.boundP95 : summary.p95);
  }
  return seconds;
}

/// Returns the geometric mean of the ratios of the times.
double score(const std::vector<double>& seconds, const std::vector<double>& baseline) {
  double sum = 0;
  for (std::size_t i = 0; i < seconds.size(); ++i) sum += std::log(seconds[i] / baseline[i]);
  return std::exp(sum / static_cast<double>(seconds.size()));
}

/// Returns the largest share of the air time that a packet takes.
double airTime(const Pace& pace) {
  double share = 0;
  for (const NamedSecret& packet : secrets()) {
    share = std::max(share, makePlan(packet.secret, pace, Channels()).airTimeShare());
  }
  return share;
}

/// Returns the values to try for a place of a pace; none for a place that stays as it is.
std::vector<int> choicesFor(std::size_t place, const Limits& limits) {
  const bool interval = place == 1 || place == 8;
  const bool loopInterval = place == 2 || place == 9;
  const bool repeats = place == 4 || place == 5 || place == 11 || place == 12;
  std::vector<int> choices;
  if (interval)
    choices = {1, 2, 3, 4, 5, 6, 8, 9, 10, 11, 12, 13, 14, 15, 16, 18, 20, 22, 25, 28, 30, 35, 40, 50};
  if (loopInterval) choices = {0, 20, 40, 60, 80, 100, 120, 140, 160, 200, 250};
  if (repeats) choices = {1, 2, 3};
  if (interval) std::erase_if(choices, [&](int value) { return value < limits.minInterval; });
  return choices;
}

std::string textOf(const Pace& pace) {
  std::string text;
  for (const int value : pace) text += (text.empty() ? "" : ",") + std::to_string(value);
  return text;
}

}  // namespace

void runBenchmark(Program& program) {
  Limits limits;
  bool bound = false;
  std::vector<int> lossPercents = {30};
  int runs = 200;
  int sweeps = 2;
  program.options().add_option("--min-interval", limits.minInterval, "Shortest wait after a datagram, ms");
  program.options().add_option("--max-air-time", limits.maxAirTime,
                               "Largest share of the air time at 1 Mbit/s with any packet, 0 to 1");
  program.options().add_option("--loss", lossPercents, "Losses to score, per cent");
  program.options().add_option("--runs", runs, "Runs of each case");
  program.options().add_option("--sweeps", sweeps, "How many times each value is varied");
  program.options().add_flag("--bound", bound, "Score the bound, which no decoder beats, not the decoder");
  program.parse("Search for pacing values, scored by 95th percentiles relative to the default pace");

  const std::vector<Case> cases = makeCases(lossPercents);
  const std::vector<double> baseline = measure(kDefaultPace, cases, runs, bound);
  Pace best = kDefaultPace;
  double bestScore = 1;
  Table table("pace-search", "Steps of the search; score: 95th percentiles relative to the default pace");
  for (std::size_t step = 0; step < static_cast<std::size_t>(sweeps) * best.size(); ++step) {
    const std::size_t place = step % best.size();
    Pace tried = best;
    for (const int value : choicesFor(place, limits)) {
      tried[place] = static_cast<std::uint8_t>(value);
      if (tried == best || airTime(tried) > limits.maxAirTime) continue;
      const double result = score(measure(tried, cases, runs, bound), baseline);
      if (result >= bestScore) continue;
      bestScore = result;
      best = tried;
      table.add(
          {{"pace", textOf(best)}, {"air time %", 100 * airTime(best)}, {"score to default", bestScore}});
    }
  }
  program.print(table);
}

}  // namespace zor::bench
