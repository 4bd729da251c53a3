#pragma once

#include <string>
#include <vector>

#include "ZOR/state/Paces.h"
#include "simulator/Trial.h"

namespace zor::bench {

// The cases that the provisioning benchmarks have in common: what phones send, how, and through which air.

inline constexpr simulator::Pace kDefaultPace = ZorFindPace("default")->values;

struct NamedSecret {
  std::string name;
  simulator::Secret secret;
};

/// A common home network, and the longest packet.
const std::vector<NamedSecret>& secrets();

struct NamedChannels {
  std::string name;
  simulator::Channels channels;
};

/// Each channel by itself, both, and both with version 3 mixed in.
const std::vector<NamedChannels>& channelChoices();

struct NamedRadio {
  std::string name;
  simulator::RadioConditions radio;
};

/// Losses one by one and in bursts, and losses one by one where an access point holds group frames. Their
/// `loss` is 0: `withLoss` sets it.
const std::vector<NamedRadio>& radios();

/// Shares of lost frames, per cent.
const std::vector<int>& losses();

/// Returns `radio` with another share of lost frames.
simulator::RadioConditions withLoss(simulator::RadioConditions radio, int lossPercent);

/// The outcomes of many runs. Times are seconds, of the decoder and of the bound.
struct Summary {
  double median = 0;
  double p95 = 0;
  double boundMedian = 0;
  double boundP95 = 0;
  std::size_t wrong = 0;  ///< Reported credentials that no phone sent.
};

Summary summarize(const std::vector<simulator::Outcome>& outcomes);

}  // namespace zor::bench
