#pragma once

#include <string>
#include <vector>

#include "bench/simulator/Trial.h"
#include "bench/support/Table.h"

namespace zor::bench {

// What the provisioning benchmarks have in common: what is sent, how, and through which air.

inline constexpr Pace kDefaultPace = {30, 30, 100, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5};

struct NamedPace {
  std::string name;
  Pace pace;
};

/// The paces that zorctl knows by name.
const std::vector<NamedPace>& paces();

struct NamedSecret {
  std::string name;
  Secret secret;
};

/// A common home network, and the longest packet.
const std::vector<NamedSecret>& secrets();

struct NamedChannels {
  std::string name;
  Channels channels;
};

/// Each channel alone, both, and both with version 3 mixed in.
const std::vector<NamedChannels>& channelChoices();

struct NamedRadio {
  std::string name;
  RadioConditions radio;
};

/// Losses one by one, in bursts, and one by one behind an access point that holds group frames.
const std::vector<NamedRadio>& radios();

/// Shares of lost frames, per cent.
const std::vector<int>& losses();

RadioConditions withLoss(RadioConditions radio, int lossPercent);

/// What became of many runs.
struct Summary {
  double median = 0;
  double p95 = 0;
  double boundMedian = 0;
  double boundP95 = 0;
  std::size_t wrong = 0;
};

Summary summarize(const std::vector<Outcome>& outcomes);

}  // namespace zor::bench
