// How long a module waits with this library and with other published ways to provision, in virtual time.

#include "bench/simulator/Cases.h"
#include "bench/simulator/Peers.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

struct NamedListens {
  const char* name;
  Listens listens;
};
constexpr NamedListens kListens[] = {{"any time", Listens::anyTime}, {"from begin", Listens::fromBegin}};

struct NamedPeer {
  const char* name;
  Peer peer;
};
constexpr NamedPeer kPeers[] = {
    {"P1", Peer::guidedCodes}, {"P2", Peer::blocksOfRows}, {"P3", Peer::wholeGroups}};

Row makeRow(const PhonePlan& phone, const NamedRadio& air, int loss, const NamedListens& listens, int runs) {
  const RadioConditions radio = withLoss(air.radio, loss);
  const Summary own = summarize(runTrials({{&phone}, radio, listens.listens}, runs));
  Row row = {{"losses", air.name},
             {"listens", listens.name},
             {"loss %", loss},
             {"default", own.median},
             {"default p95", own.p95}};
  double best = kGiveUpSeconds;
  for (const NamedPeer& peer : kPeers) {
    const std::vector<double> seconds = runPeers(peer.peer, radio, listens.listens, runs);
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
  program.parse("Simulated time to provision, default pacing, against models of common peers");

  const PhonePlan phone = makePlan(secrets().front().secret, kDefaultPace, Channels());
  Table table("peers",
              "Time to provision " + secrets().front().name + ", median and 95th percentile, seconds");
  for (const NamedListens& listens : kListens) {
    for (const NamedRadio& air : radios()) {
      for (const int loss : losses()) table.add(makeRow(phone, air, loss, listens, runs));
    }
  }
  program.print(table);
}

}  // namespace zor::bench
