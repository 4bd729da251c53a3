// Measures how long a module waits for its credentials, in virtual time: the library's schedules, a lossy air
// and the receiver's decoder, compared with a receiver that knows in advance what every frame means.

#include <algorithm>

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

using simulator::makePlan;
using simulator::Phone;
using simulator::PhonePlan;

Row makeRow(const std::string& packet, const std::string& air, const std::string& sends, int lossPercent,
            const Summary& summary, const Summary& quiet) {
  const Interval interval = ratioInterval(summary.seconds, quiet.seconds);
  return {{"packet", packet},
          {"air", air},
          {"sent", sends},
          {"loss %", lossPercent},
          {"median s", summary.median},
          {"p95 s", summary.p95},
          {"bound median s", summary.boundMedian},
          {"bound p95 s", summary.boundP95},
          {"median to bound", ratio(summary.median, summary.boundMedian)},
          {"p95 to bound", ratio(summary.p95, summary.boundP95)},
          {"median to quiet", ratio(summary.median, quiet.median)},
          {"low", interval.low},
          {"high", interval.high},
          {"p95 to quiet", ratio(summary.p95, quiet.p95)},
          {"wrong", summary.wrong}};
}

struct Options {
  std::vector<std::string> airs = namesOf(quietAirs());
  std::vector<std::string> sent = namesOf(channelChoices());
  std::vector<int> losses = bench::losses();
  std::vector<std::string> packets = namesOf(secrets());
  int runs = 200;
};

/// Adds the rows of the same phones in every air; the quiet baseline is the first air, losses one by one.
void addRows(Table& table, const std::string& sends, const NamedSecret& packet,
             const std::vector<Phone>& phones, const Options& options) {
  for (const int loss : options.losses) {
    const auto measure = [&](const NamedAir& air) {
      return summarize(simulator::runTrials({phones, withLoss(air.environment, loss)}, options.runs));
    };
    const Summary quiet = measure(airs().front());
    for (const NamedAir& air : findAirs(options.airs)) {
      if (air.environment.rangeExtender && phones.size() == 1) continue;
      table.add(makeRow(packet.name, air.name, sends, loss, measure(air), quiet));
    }
  }
}

/// Adds the rows of one phone, and of two where they use both channels.
void addRows(Table& table, const std::string& sent, const NamedSecret& packet, const Options& options) {
  const simulator::Channels channels = findChannels(sent).channels;
  const simulator::Secret other = otherSecret(packet.secret);
  const PhonePlan plan = makePlan(packet.secret, kDefaultPace, channels);
  const PhonePlan earlier = makePlan(mistyped(packet.secret), kDefaultPace, channels);
  const PhonePlan otherPlan = makePlan(other, kDefaultPace, channels);
  const PhonePlan otherEarlier = makePlan(mistyped(other), kDefaultPace, channels);
  addRows(table, sent, packet, {{&plan, &earlier}}, options);
  if (sent != "both") return;
  addRows(table, "both x 2 phones", packet, {{&plan, &earlier}, {&otherPlan, &otherEarlier}}, options);
}

}  // namespace

void runBenchmark(Program& program) {
  Options options;
  program.options().add_option("--air", options.airs,
                               "Airs by name, or \"all\"; the quiet ones when not given");
  program.options()
      .add_option("--sent", options.sent, "What the phone sends; everything when not given")
      ->check(CLI::IsMember(namesOf(channelChoices())));
  program.options()
      .add_option("--packet", options.packets, "Packets; both when not given")
      ->check(CLI::IsMember(options.packets));
  program.options().add_option("--loss", options.losses, "Losses in per cent")->check(CLI::Range(0, 99));
  program.options().add_option("--runs", options.runs, "Runs of each case")->check(CLI::PositiveNumber);
  program.parse("Simulated time until a module has its credentials, compared with the shortest possible");

  Table table("provision",
              "Time to provision, default pacing; bound: a receiver that knows in advance what every frame "
              "means; quiet: "
              "losses one by one; low and high: 95 % confidence of the median to quiet");
  for (const NamedSecret& packet : secrets()) {
    if (std::count(options.packets.begin(), options.packets.end(), packet.name) == 0) continue;
    for (const std::string& sent : options.sent) addRows(table, sent, packet, options);
  }
  program.print(table);
}

}  // namespace zor::bench
