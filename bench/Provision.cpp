// Measures how long a module waits for its credentials, in virtual time: the library's schedules, a lossy air
// and the receiver's decoder, compared with a receiver that knows in advance what every frame means.

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

using simulator::Channels;
using simulator::makePlan;
using simulator::PhonePlan;

Row makeRow(const std::string& packet, const std::string& air, const std::string& sends, int lossPercent,
            const Summary& summary) {
  return {{"packet", packet},
          {"losses", air},
          {"sent", sends},
          {"loss %", lossPercent},
          {"median s", summary.median},
          {"p95 s", summary.p95},
          {"bound median s", summary.boundMedian},
          {"bound p95 s", summary.boundP95},
          {"median to bound", ratio(summary.median, summary.boundMedian)},
          {"p95 to bound", ratio(summary.p95, summary.boundP95)},
          {"wrong", summary.wrong}};
}

void addRows(Table& table, const std::string& sends, const NamedSecret& packet,
             const std::vector<const PhonePlan*>& phones, int runs) {
  for (const NamedRadio& air : radios()) {
    for (const int loss : losses()) {
      const simulator::Scenario scenario{phones, withLoss(air.radio, loss)};
      table.add(makeRow(packet.name, air.name, sends, loss, summarize(simulator::runTrials(scenario, runs))));
    }
  }
}

}  // namespace

void runBenchmark(Program& program) {
  int runs = 200;
  program.options().add_option("--runs", runs, "Runs of each case");
  program.parse("Simulated time until a module has its credentials, compared with the shortest possible");

  Table table(
      "provision",
      "Time to provision, default pacing; bound: a receiver that knows in advance what every frame means");
  for (const NamedSecret& packet : secrets()) {
    for (const NamedChannels& choice : channelChoices()) {
      const PhonePlan phone = makePlan(packet.secret, kDefaultPace, choice.channels);
      addRows(table, choice.name, packet, {&phone}, runs);
    }
    const PhonePlan phone = makePlan(packet.secret, kDefaultPace, Channels());
    const PhonePlan other = makePlan({"Neighbour", "another pass phrase", {}}, kDefaultPace, Channels());
    addRows(table, "both x 2 phones", packet, {&phone, &other}, runs);
  }
  program.print(table);
}

}  // namespace zor::bench
