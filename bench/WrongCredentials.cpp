// Counts reported credentials that no phone sent, in many simulated runs with random packets, under every
// kind of loss, of one phone and of two at the same time.

#include <algorithm>
#include <iostream>

#include "bench/support/Cases.h"
#include "bench/support/Program.h"
#include "bench/support/Statistics.h"

namespace zor::bench {
namespace {

using simulator::Channels;
using simulator::Pace;
using simulator::PhonePlan;
using simulator::Random;
using simulator::Secret;

/// Returns up to `maxLength` bytes other than NUL, which ends a text: of all values, or of eight, which a
/// decoder can mix up more easily.
std::string randomText(Random& random, std::int64_t maxLength) {
  std::string text(static_cast<std::size_t>(random.below(maxLength + 1)), '\0');
  const bool few = random.below(2) == 1;
  for (char& c : text) c = static_cast<char>(few ? 'a' + random.below(8) : 1 + random.below(255));
  return text;
}

Secret randomSecret(Random& random) {
  Secret secret{randomText(random, 32), randomText(random, 64), {}};
  const auto room = static_cast<std::int64_t>(96 - secret.ssid.size() - secret.passPhrase.size());
  secret.append.resize(static_cast<std::size_t>(random.below(std::min<std::int64_t>(room, 16) + 1)));
  for (std::uint8_t& byte : secret.append) byte = static_cast<std::uint8_t>(random.below(256));
  return secret;
}

template <class Choices>
const auto& oneOf(const Choices& choices, Random& random) {
  return choices[static_cast<std::size_t>(random.below(static_cast<std::int64_t>(std::size(choices))))];
}

/// Returns the plan of a phone; most phones have the default pace, and most the default length bases.
PhonePlan randomPlan(Random& random) {
  constexpr std::size_t kMulticastLength = 0;
  constexpr std::size_t kBroadcastLength = 7;
  Pace pace = random.below(2) == 1 ? kDefaultPace : oneOf(kZorPaces, random).values;
  if (random.below(4) == 0) {
    pace[kMulticastLength] = static_cast<std::uint8_t>(1 + random.below(100));
    pace[kBroadcastLength] = static_cast<std::uint8_t>(1 + random.below(100));
  }
  const Channels channels = oneOf(channelChoices(), random).channels;
  return simulator::makePlan(randomSecret(random), pace, channels);
}

struct Tally {
  double runs = 0;
  double complete = 0;
  double wrong = 0;
};

/// Prints how to repeat the run that reported wrong credentials.
void printRepeat(std::uint64_t seed, int runsPerPacket, const receiver::Credentials& credentials) {
  std::cerr << "wrong credentials with --seed " << seed << " --runs " << runsPerPacket
            << " --runs-per-packet " << runsPerPacket << ": version "
            << static_cast<int>(credentials.encoding) << ", lengths " << credentials.ssid.size() << " + "
            << credentials.passPhrase.size() << " + " << credentials.append.size() << "\n";
}

}  // namespace

void runBenchmark(Program& program) {
  int runs = 20'000;
  int runsPerPacket = 20;
  std::uint64_t seed = 1;
  program.options().add_option("--runs", runs, "Total number of runs");
  program.options().add_option("--runs-per-packet", runsPerPacket, "Runs of each pair of random packets");
  program.options().add_option("--seed", seed, "First seed of the packets and of the runs");
  program.parse("Simulated runs of random packets, counting credentials that no phone sent");

  std::vector<Tally> tallies(radios().size());
  for (const std::uint64_t end = seed + static_cast<std::uint64_t>(runs / runsPerPacket); seed < end;
       ++seed) {
    Random random(seed);
    const PhonePlan first = randomPlan(random);
    const PhonePlan second = randomPlan(random);
    const auto which = static_cast<std::size_t>(random.below(static_cast<std::int64_t>(radios().size())));
    simulator::Scenario scenario{{&first}, withLoss(radios()[which].radio, oneOf(losses(), random))};
    if (random.below(2) == 1) scenario.phones.push_back(&second);
    Tally& tally = tallies[which];
    for (const simulator::Outcome& outcome : simulator::runTrials(scenario, runsPerPacket, random())) {
      tally.runs += 1;
      tally.complete += outcome.decoderSeconds < simulator::kGiveUpSeconds ? 1 : 0;
      tally.wrong += static_cast<double>(outcome.wrong.size());
      for (const receiver::Credentials& wrong : outcome.wrong) printRepeat(seed, runsPerPacket, wrong);
    }
  }
  Table table("wrong-credentials",
              "Credentials that no phone sent; random packets, losses of 0 to 70 %, 1 or 2 phones");
  for (std::size_t i = 0; i < tallies.size(); ++i) {
    table.add({{"losses", radios()[i].name},
               {"runs", tallies[i].runs},
               {"complete", tallies[i].complete},
               {"wrong", tallies[i].wrong},
               {"wrong to complete", ratio(tallies[i].wrong, tallies[i].complete)}});
  }
  program.print(table);
}

}  // namespace zor::bench
