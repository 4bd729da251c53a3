#include "bench/support/Cases.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "bench/support/Statistics.h"

namespace zor::bench {

using simulator::Environment;
using simulator::Outcome;

const std::vector<NamedSecret>& secrets() {
  static const std::vector<NamedSecret> kSecrets = {{"9 + 12 bytes", simulator::sampleSecret(9, 12)},
                                                    {"32 + 64 bytes", simulator::sampleSecret(32, 64)}};
  return kSecrets;
}

simulator::Secret otherSecret(simulator::Secret secret) {
  std::reverse(secret.ssid.begin(), secret.ssid.end());
  std::reverse(secret.passPhrase.begin(), secret.passPhrase.end());
  return secret;
}

const std::vector<NamedChannels>& channelChoices() {
  static const std::vector<NamedChannels> kChoices = {{"multicast", {true, false, false}},
                                                      {"broadcast", {false, true, false}},
                                                      {"both", {true, true, false}},
                                                      {"both + v3", {true, true, true}}};
  return kChoices;
}

const NamedChannels& findChannels(const std::string& name) {
  return *std::find_if(channelChoices().begin(), channelChoices().end(),
                       [&](const NamedChannels& choice) { return choice.name == name; });
}

std::vector<NamedAir> findAirs(const std::vector<std::string>& names) {
  if (names.empty() || names.front() == "all") return airs();
  std::vector<NamedAir> found;
  for (const std::string& name : names) {
    if (const NamedAir* const air = simulator::findAir(name)) {
      found.push_back(*air);
      continue;
    }
    std::cerr << "no air is called \"" << name << "\"; use one of these:\n";
    for (const NamedAir& known : airs()) std::cerr << "  " << known.name << "\n";
    std::exit(2);
  }
  return found;
}

const std::vector<int>& losses() {
  static const std::vector<int> kLosses = {0, 10, 20, 30, 50, 70};
  return kLosses;
}

Environment withLoss(Environment environment, int lossPercent) {
  environment.radio.loss = lossPercent / 100.0;
  return environment;
}

Summary summarize(const std::vector<Outcome>& outcomes) {
  Summary summary;
  std::vector<double> bound;
  std::vector<double> frames;
  std::vector<double> airSeconds;
  for (const Outcome& outcome : outcomes) {
    summary.seconds.push_back(outcome.decoderSeconds);
    bound.push_back(outcome.boundSeconds);
    frames.push_back(static_cast<double>(outcome.framesSent));
    airSeconds.push_back(outcome.airSeconds);
    summary.wrong += outcome.wrong.size();
  }
  summary.median = median(summary.seconds);
  summary.p95 = percentile(summary.seconds, 0.95);
  summary.frames = median(frames);
  summary.airSeconds = median(airSeconds);
  summary.boundMedian = median(bound);
  summary.boundP95 = percentile(bound, 0.95);
  return summary;
}

}  // namespace zor::bench
