#include "bench/support/Cases.h"

#include "bench/support/SampleRun.h"
#include "bench/support/Statistics.h"

namespace zor::bench {

using simulator::Held;
using simulator::Outcome;
using simulator::RadioConditions;

const std::vector<NamedSecret>& secrets() {
  static const std::vector<NamedSecret> kSecrets = {
      {"9 + 12 bytes", {kSsid, kPassPhrase, {}}},
      {"32 + 64 bytes",
       {"a network of thirty-two bytes ok",
        "0123456789abcdef and so on until sixty-four bytes are full - yes",
        {}}}};
  return kSecrets;
}

const std::vector<NamedChannels>& channelChoices() {
  static const std::vector<NamedChannels> kChoices = {{"multicast", {true, false, false}},
                                                      {"broadcast", {false, true, false}},
                                                      {"both", {true, true, false}},
                                                      {"both + v3", {true, true, true}}};
  return kChoices;
}

const std::vector<NamedRadio>& radios() {
  static const std::vector<NamedRadio> kRadios = {
      {"one by one", {0, false, Held::nothing, 0}},
      {"bursts", {0, true, Held::nothing, 0}},
      {"held 100 ms", {0, false, Held::groups, 100'000}},
      {"held 300 ms", {0, false, Held::groups, 300'000}},
      {"multicast held 300 ms", {0, false, Held::multicast, 300'000}}};
  return kRadios;
}

const std::vector<int>& losses() {
  static const std::vector<int> kLosses = {0, 10, 20, 30, 50, 70};
  return kLosses;
}

RadioConditions withLoss(RadioConditions radio, int lossPercent) {
  radio.loss = lossPercent / 100.0;
  return radio;
}

Summary summarize(const std::vector<Outcome>& outcomes) {
  std::vector<double> decoder;
  std::vector<double> bound;
  Summary summary;
  for (const Outcome& outcome : outcomes) {
    decoder.push_back(outcome.decoderSeconds);
    bound.push_back(outcome.boundSeconds);
    summary.wrong += outcome.wrong.size();
  }
  summary.median = median(decoder);
  summary.p95 = percentile(decoder, 0.95);
  summary.boundMedian = median(bound);
  summary.boundP95 = percentile(bound, 0.95);
  return summary;
}

}  // namespace zor::bench
