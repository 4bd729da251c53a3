// Compares how long a module waits with this library's paces and with its common peers, in virtual time.

#include <algorithm>
#include <string>

#include "bench/support/Cases.h"
#include "bench/support/Peers.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

using simulator::Listens;

struct NamedListens {
  const char* name;
  Listens listens;
};
constexpr NamedListens kAnyTime = {"any time", Listens::anyTime};
constexpr NamedListens kFromStart = {"from start", Listens::fromStart};

struct NamedPeer {
  const char* name;
  Peer peer;
  Variant variant;
};
constexpr NamedPeer kPeers[] = {
    {"P1", Peer::guidedCodes, Variant::plain},  {"P1 best", Peer::guidedCodes, Variant::best},
    {"P2", Peer::blocksOfRows, Variant::plain}, {"P2 best", Peer::blocksOfRows, Variant::best},
    {"P3", Peer::wholeGroups, Variant::plain},  {"P3 best", Peer::wholeGroups, Variant::best}};

/// What became of many runs of one sender.
struct Series {
  std::string sender;
  std::vector<double> seconds;
  std::vector<double> frames;
};

Series runPace(const ZorPace& pace, const simulator::Environment& environment, Listens listens, int runs) {
  const simulator::PhonePlan plan =
      simulator::makePlan(secrets().front().secret, pace.values, simulator::Channels());
  Series series{std::string(pace.name), {}, {}};
  for (const simulator::Outcome& outcome : simulator::runTrials({{{&plan}}, environment, listens}, runs)) {
    series.seconds.push_back(outcome.decoderSeconds);
    series.frames.push_back(static_cast<double>(outcome.framesSent));
  }
  return series;
}

Series runPeers(const NamedPeer& peer, const simulator::RadioConditions& radio, Listens listens, int runs) {
  Series series{peer.name, {}, {}};
  for (int seed = 1; seed <= runs; ++seed) {
    const PeerOutcome outcome =
        runPeer(peer.peer, peer.variant, radio, listens, static_cast<std::uint64_t>(seed));
    series.seconds.push_back(outcome.seconds);
    series.frames.push_back(outcome.frames);
  }
  return series;
}

/// Adds a row for each pace and each peer, compared with the peer of the lowest median.
void addRows(Table& table, const NamedAir& air, int loss, const NamedListens& listens, int runs) {
  const simulator::Environment environment = withLoss(air.environment, loss);
  std::vector<Series> senders;
  for (const NamedPeer& peer : kPeers) {
    senders.push_back(runPeers(peer, environment.radio, listens.listens, runs));
  }
  const Series best = *std::min_element(senders.begin(), senders.end(), [](const Series& a, const Series& b) {
    return median(a.seconds) < median(b.seconds);
  });
  for (const ZorPace& pace : kZorPaces) {
    senders.push_back(runPace(pace, environment, listens.listens, runs));
  }
  for (const Series& sender : senders) {
    const Interval interval = ratioInterval(sender.seconds, best.seconds);
    table.add({{"air", air.name},
               {"listens", listens.name},
               {"loss %", loss},
               {"sender", sender.sender},
               {"median s", median(sender.seconds)},
               {"p95 s", percentile(sender.seconds, 0.95)},
               {"frames", median(sender.frames)},
               {"median to best peer", ratio(median(sender.seconds), median(best.seconds))},
               {"low", interval.low},
               {"high", interval.high},
               {"p95 to best peer", ratio(percentile(sender.seconds, 0.95), percentile(best.seconds, 0.95))},
               {"frames to best peer", ratio(median(sender.frames), median(best.frames))}});
  }
}

}  // namespace

void runBenchmark(Program& program) {
  int runs = 500;
  program.options().add_option("--runs", runs, "Runs of each case")->check(CLI::PositiveNumber);
  program.parse("Simulated time to provision, compared with models of common peers");

  Table table("peers", "Time to provision " + secrets().front().name +
                           "; the best peer has the lowest median; low and high: 95 % confidence");
  for (const NamedAir& air : quietAirs()) {
    for (const int loss : losses()) addRows(table, air, loss, kAnyTime, runs);
  }
  for (const int loss : losses()) addRows(table, quietAirs().front(), loss, kFromStart, runs);
  program.print(table);
}

}  // namespace zor::bench
