// Measures how fast the named paces provision, in virtual time, and how much of the channel they take.

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

struct Sent {
  NamedSecret packet;
  NamedAir air;
  NamedChannels choice;
};

/// Both channels through every kind of air, and each by itself, because some access points pass on only one.
std::vector<Sent> makeCases() {
  std::vector<Sent> cases;
  for (const NamedSecret& packet : secrets()) {
    for (const NamedAir& air : quietAirs()) cases.push_back({packet, air, {"both", simulator::Channels()}});
    cases.push_back({packet, quietAirs().front(), {"multicast", {true, false, false}}});
    cases.push_back({packet, quietAirs().front(), {"broadcast", {false, true, false}}});
  }
  return cases;
}

void addRows(Table& table, const Sent& sent, int loss, int runs) {
  Summary baseline;
  for (const ZorPace& pace : kZorPaces) {
    const simulator::PhonePlan phone =
        simulator::makePlan(sent.packet.secret, pace.values, sent.choice.channels);
    const Summary summary =
        summarize(simulator::runTrials({{{&phone}}, withLoss(sent.air.environment, loss)}, runs));
    if (pace.values == kDefaultPace) baseline = summary;
    table.add({{"packet", sent.packet.name},
               {"air", sent.air.name},
               {"sent", sent.choice.name},
               {"loss %", loss},
               {"pace", pace.name},
               {"air time %", 100 * phone.airTimeShare()},
               {"median s", summary.median},
               {"p95 s", summary.p95},
               {"median to default", ratio(summary.median, baseline.median)},
               {"p95 to default", ratio(summary.p95, baseline.p95)}});
  }
}

}  // namespace

void runBenchmark(Program& program) {
  int runs = 200;
  program.options().add_option("--runs", runs, "Runs of each case");
  program.parse("Simulated time to provision with each named pace");

  Table table("paces", "Time to provision with the named paces");
  for (const Sent& sent : makeCases()) {
    for (const int loss : losses()) addRows(table, sent, loss, runs);
  }
  program.print(table);
}

}  // namespace zor::bench
