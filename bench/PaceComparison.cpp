// Measures how fast paces provision, in virtual time, and what they cost: frames, time on the air and energy.

#include <algorithm>

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

// What radios take, watts: a module that listens and an access point that sends. 80 and 300 mA at 3.3 V are
// of the order that data sheets of Wi-Fi modules name.
constexpr double kListeningWatts = 0.26;
constexpr double kSendingWatts = 1;

struct NamedPace {
  std::string name;
  simulator::Pace values;
};

struct PaceOptions {
  std::vector<std::string> airs = namesOf(quietAirs());
  std::vector<std::string> packets = namesOf(secrets());
  std::vector<int> losses = bench::losses();
  std::vector<NamedPace> paces;
  int runs = 200;
};

/// The named paces, and one with `values` unless they are empty.
std::vector<NamedPace> makePaces(const std::vector<int>& values) {
  std::vector<NamedPace> paces;
  for (const ZorPace& pace : kZorPaces) paces.push_back({std::string(pace.name), pace.values});
  if (values.empty()) return paces;
  simulator::Pace own{};
  std::transform(values.begin(), values.end(), own.begin(),
                 [](int value) { return static_cast<std::uint8_t>(value); });
  paces.push_back({"values", own});
  return paces;
}

Row makeRow(const simulator::PhonePlan& plan, const Summary& summary, const Summary& baseline) {
  const double joules = kSendingWatts * summary.airSeconds + kListeningWatts * summary.median;
  return {{"frames/s", plan.framesPerSecond()},
          {"air time %", 100 * plan.airTimeShare()},
          {"median s", summary.median},
          {"p95 s", summary.p95},
          {"median to bound", ratio(summary.median, summary.boundMedian)},
          {"p95 to bound", ratio(summary.p95, summary.boundP95)},
          {"median to default", ratio(summary.median, baseline.median)},
          {"p95 to default", ratio(summary.p95, baseline.p95)},
          {"frames", summary.frames},
          {"air ms", 1e3 * summary.airSeconds},
          {"mJ", 1e3 * joules}};
}

void addRows(Table& table, const NamedSecret& packet, const NamedAir& air, const std::string& sent, int loss,
             const PaceOptions& options) {
  Summary baseline;
  for (const NamedPace& pace : options.paces) {
    const simulator::PhonePlan plan =
        simulator::makePlan(packet.secret, pace.values, findChannels(sent).channels);
    if (plan.channels.empty()) continue;
    const simulator::Scenario scenario{{{&plan}}, withLoss(air.environment, loss)};
    const Summary summary = summarize(simulator::runTrials(scenario, options.runs));
    if (pace.values == kDefaultPace) baseline = summary;
    Row row = {
        {"packet", packet.name}, {"air", air.name}, {"sent", sent}, {"loss %", loss}, {"pace", pace.name}};
    row.update(makeRow(plan, summary, baseline));
    table.add(row);
  }
}

/// Both channels through every chosen air, and each by itself, because some access points pass on only one.
void addRows(Table& table, const NamedSecret& packet, const PaceOptions& options) {
  for (const int loss : options.losses) {
    for (const NamedAir& air : findAirs(options.airs)) addRows(table, packet, air, "both", loss, options);
    for (const char* const sent : {"multicast", "broadcast"}) {
      addRows(table, packet, quietAirs().front(), sent, loss, options);
    }
  }
}

}  // namespace

void runBenchmark(Program& program) {
  PaceOptions options;
  std::vector<int> values;
  program.options().add_option("--air", options.airs, "Airs by name; the quiet ones when not given");
  program.options()
      .add_option("--packet", options.packets, "Packets; both when not given")
      ->check(CLI::IsMember(options.packets));
  program.options().add_option("--loss", options.losses, "Losses in per cent")->check(CLI::Range(0, 99));
  program.options()
      .add_option("--values", values, "Another pace: 14 values with commas between them")
      ->delimiter(',')
      ->expected(static_cast<int>(kDefaultPace.size()))
      ->check(CLI::Range(0, 255));
  program.options().add_option("--runs", options.runs, "Runs of each case")->check(CLI::PositiveNumber);
  program.parse("Simulated time to provision with each named pace, and its cost");
  options.paces = makePaces(values);

  Table table("paces", "Time to provision with the named paces; frames, air ms and mJ until then, medians");
  for (const NamedSecret& packet : secrets()) {
    if (std::count(options.packets.begin(), options.packets.end(), packet.name) == 0) continue;
    addRows(table, packet, options);
  }
  program.print(table);
}

}  // namespace zor::bench
