// Counts reported credentials that no phone sent, in many simulated runs with random packets, in every air,
// of one phone and of more at the same time.

#include <algorithm>
#include <iostream>

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/RandomHome.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

struct CountOptions {
  std::vector<std::string> airs;
  std::string sent;
  int loss = -1;
  int runs = 20'000;
  int runsPerPacket = 20;
  std::uint64_t seed = 1;
};

struct Tally {
  double runs = 0;
  double complete = 0;
  std::size_t wrong = 0;
  std::size_t stoppedByCrc = 0;   ///< Runs.
  std::size_t stoppedByLuck = 0;  ///< Runs.
};

/// The module listens on for this long after the report, because a wrong one may follow.
constexpr double kSecondsAfter = 2;

/// Prints how to repeat the run that reported wrong credentials.
void printRepeat(const NamedAir& air, std::uint64_t seed, const CountOptions& options,
                 const receiver::Credentials& credentials) {
  std::cerr << "wrong credentials with --air \"" << air.name << "\"";
  if (!options.sent.empty()) std::cerr << " --sent \"" << options.sent << "\"";
  if (options.loss >= 0) std::cerr << " --loss " << options.loss;
  std::cerr << " --seed " << seed << " --runs " << options.runsPerPacket << " --runs-per-packet "
            << options.runsPerPacket << ": version " << static_cast<int>(credentials.encoding) << ", lengths "
            << credentials.ssid.size() << " + " << credentials.passPhrase.size() << " + "
            << credentials.append.size() << "\n";
}

/// Simulates `options.runsPerPacket` runs of a random home and adds them to `tally`.
void addRuns(Tally& tally, const NamedAir& air, std::uint64_t seed, const CountOptions& options) {
  simulator::Random random(seed);
  const std::int64_t phones = air.environment.rangeExtender ? 2 : 1 + random.below(3);
  const RandomHome home(options.sent, phones, random);
  const int loss = options.loss >= 0 ? options.loss : random.oneOf(losses());
  const simulator::Scenario scenario{home.phones(), withLoss(air.environment, loss),
                                     simulator::Listens::anyTime, kSecondsAfter};
  for (const simulator::Outcome& outcome : simulator::runTrials(scenario, options.runsPerPacket, random())) {
    tally.runs += 1;
    tally.complete += outcome.decoderSeconds < simulator::kGiveUpSeconds ? 1 : 0;
    tally.wrong += outcome.wrong.size();
    tally.stoppedByCrc += outcome.stoppedByCrc ? 1 : 0;
    tally.stoppedByLuck += outcome.stoppedByLuck ? 1 : 0;
    for (const receiver::Credentials& wrong : outcome.wrong) printRepeat(air, seed, options, wrong);
  }
}

Row makeRow(const NamedAir& air, const Tally& tally) {
  const auto atMostPerMillion = [&](std::size_t count) { return highestMean(count) / tally.runs * 1e6; };
  return {{"air", air.name},
          {"runs", tally.runs},
          {"complete", tally.complete},
          {"wrong", tally.wrong},
          {"wrong per million at most", atMostPerMillion(tally.wrong)},
          {"stopped by the CRC", tally.stoppedByCrc},
          {"more than one byte off", tally.stoppedByLuck},
          {"per million at most", atMostPerMillion(tally.stoppedByLuck)}};
}

}  // namespace

void runBenchmark(Program& program) {
  CountOptions options;
  program.options().add_option("--air", options.airs, "Airs by name; all when not given");
  program.options()
      .add_option("--sent", options.sent, "What phones send; any when not given")
      ->check(CLI::IsMember(namesOf(channelChoices())));
  program.options()
      .add_option("--loss", options.loss, "Loss in per cent; 0 to 70 when not given")
      ->check(CLI::Range(0, 99));
  program.options().add_option("--runs", options.runs, "Runs of all airs together");
  program.options()
      .add_option("--runs-per-packet", options.runsPerPacket, "Runs of each set of random packets")
      ->check(CLI::PositiveNumber);
  program.options().add_option("--seed", options.seed, "First seed of the packets and of the runs");
  program.parse("Simulated runs of random packets, counting credentials that no phone sent");

  Table table("wrong-credentials",
              "Credentials that no phone sent; random packets of 1 to 3 phones. \"At most\" has a confidence "
              "of 95 %");
  const std::vector<NamedAir> airs = findAirs(options.airs);
  const int runsOfEach = options.runs / static_cast<int>(airs.size());
  const auto packets = static_cast<std::uint64_t>(
      std::max(1, (runsOfEach + options.runsPerPacket - 1) / options.runsPerPacket));
  for (const NamedAir& air : airs) {
    Tally tally;
    for (std::uint64_t i = 0; i < packets; ++i) addRuns(tally, air, options.seed + i, options);
    table.add(makeRow(air, tally));
  }
  program.print(table);
}

}  // namespace zor::bench
