#pragma once

#include <string>
#include <vector>

#include "ZOR/state/Paces.h"
#include "simulator/Airs.h"
#include "simulator/SampleSecret.h"
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

/// Returns another secret whose texts are as long.
simulator::Secret otherSecret(simulator::Secret secret);

struct NamedChannels {
  std::string name;
  simulator::Channels channels;
};

/// Each channel by itself, both, and both with version 3 mixed in.
const std::vector<NamedChannels>& channelChoices();

/// Returns the choice with this name, which must be that of one of `channelChoices`.
const NamedChannels& findChannels(const std::string& name);

using simulator::airs;
using simulator::mistyped;
using simulator::NamedAir;
using simulator::quietAirs;

/// Returns the airs with these names; all of `airs` for no names or "all". Ends the process when a name is
/// not known, with a message that lists those that are.
std::vector<NamedAir> findAirs(const std::vector<std::string>& names);

/// Shares of lost frames, per cent.
const std::vector<int>& losses();

/// Returns `environment` with another share of lost frames.
simulator::Environment withLoss(simulator::Environment environment, int lossPercent);

/// Returns the names of `cases`.
template <class Cases>
std::vector<std::string> namesOf(const Cases& cases) {
  std::vector<std::string> names;
  names.reserve(std::size(cases));
  for (const auto& one : cases) names.push_back(one.name);
  return names;
}

/// The outcomes of many runs. Times are seconds, of the decoder and of the bound.
struct Summary {
  std::vector<double> seconds;  ///< Until the decoder had everything.
  double median = 0;
  double p95 = 0;
  double boundMedian = 0;
  double boundP95 = 0;
  double frames = 0;      ///< Median of the frames sent until the decoder had everything.
  double airSeconds = 0;  ///< Median of the time that they took on the air.
  std::size_t wrong = 0;  ///< Reported credentials that no phone sent.
};

Summary summarize(const std::vector<simulator::Outcome>& outcomes);

}  // namespace zor::bench
