#include "bench/support/Cases.h"

#include <algorithm>

#include "bench/support/SampleRun.h"
#include "bench/support/Statistics.h"

namespace zor::bench {

using simulator::Environment;
using simulator::Outcome;

const std::vector<NamedSecret>& secrets() {
  static const std::vector<NamedSecret> kSecrets = {
      {"9 + 12 bytes", {kSsid, kPassPhrase, {}}},
      {"32 + 64 bytes",
       {"a network of thirty-two bytes ok",
        "0123456789abcdef and so on until sixty-four bytes are full - yes",
        {}}}};
  return kSecrets;
}

simulator::Secret mistyped(simulator::Secret secret) {
  secret.passPhrase.back() = '?';
  return secret;
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
