// Compares how long a module waits with this library and with its common peers, in virtual time.

#include "bench/support/Cases.h"
#include "bench/support/Peers.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

struct NamedListens {
  const char* name;
  simulator::Listens listens;
};
constexpr NamedListens kListens[] = {{"any time", simulator::Listens::anyTime},
                                     {"from start", simulator::Listens::fromStart}};

struct NamedPeer {
  const char* name;
  Peer peer;
};
constexpr NamedPeer kPeers[] = {
    {"P1", Peer::guidedCodes}, {"P2", Peer::blocksOfRows}, {"P3", Peer::wholeGroups}};

Row makeRow(const simulator::PhonePlan& phone, const NamedAir& air, int loss, const NamedListens& listens,
            int runs) {
  const simulator::Environment environment = withLoss(air.environment, loss);
  const Summary own = summarize(simulator::runTrials({{{&phone}}, environment, listens.listens}, runs));
  Row row = {{"air", air.name},
             {"listens", listens.name},
             {"loss %", loss},
             {"default", own.median},
             {"default p95", own.p95}};
  double best = simulator::kGiveUpSeconds;
  for (const NamedPeer& peer : kPeers) {
    const std::vector<double> seconds = runPeers(peer.peer, environment.radio, listens.listens, runs);
    best = std::min(best, median(seconds));
    row[peer.name] = median(seconds);
    row[std::string(peer.name) + " p95"] = percentile(seconds, 0.95);
  }
  row["default to best peer"] = ratio(own.median, best);
  return row;
}

}  // namespace

void runBenchmark(Program& program) {
  int runs = 500;
  program.options().add_option("--runs", runs, "Runs of each case");
  program.parse("Simulated time to provision, default pacing, compared with models of common peers");

  const simulator::PhonePlan phone =
      simulator::makePlan(secrets().front().secret, kDefaultPace, simulator::Channels());
  Table table("peers",
              "Time to provision " + secrets().front().name + ", median and 95th percentile, seconds");
  for (const NamedListens& listens : kListens) {
    for (const NamedAir& air : quietAirs()) {
      for (const int loss : losses()) table.add(makeRow(phone, air, loss, listens, runs));
    }
  }
  program.print(table);
}

}  // namespace zor::bench
