#pragma once

#include <cstdint>
#include <vector>

#include "receiver/decoder/Decoder.h"
#include "simulator/Environment.h"
#include "simulator/PhonePlan.h"

namespace zor::simulator {

/// When a module starts to listen: before the phones send, or at a random moment of their runs.
enum class Listens { fromStart, anyTime };

/// One phone: what it sends, and what it sent before where the environment has an earlier run.
struct Phone {
  const PhonePlan* plan;
  const PhonePlan* earlier = nullptr;
};

/// Phones that provision at the same time, and what is between them and the module.
struct Scenario {
  std::vector<Phone> phones;
  Environment environment;
  Listens listens = Listens::anyTime;
  double secondsAfter = 0;  ///< How long the module listens on after it has all credentials.
};

/// A run that has not provisioned after this many seconds is given up.
inline constexpr double kGiveUpSeconds = 100;

/// What became of one run. Times count from when the module listens and all phones send their present
/// credentials, and are `kGiveUpSeconds` when the run was given up.
struct Outcome {
  double decoderSeconds = kGiveUpSeconds;  ///< Until the decoder had every phone's credentials.
  double boundSeconds = kGiveUpSeconds;    ///< Until each piece of information had arrived once.
  std::int64_t framesSent = 0;             ///< By the phones' runs until the decoder had everything.
  double airSeconds = 0;                   ///< For which these frames kept the channel busy, sent once each.
  std::vector<receiver::Credentials> wrong;  ///< Credentials that no phone sent.
  bool stoppedByCrc = false;                 ///< Nothing but a CRC kept the decoder from wrong credentials.
  bool stoppedByLuck = false;                ///< The same, and more than one byte was wrong: a CRC lets one
                                             ///< such packet in 256 pass.
};

/// Simulates one run, in virtual time. `decoder` is reset first; it is lent so that many runs can share one.
Outcome runTrial(const Scenario& scenario, std::uint64_t seed, receiver::Decoder& decoder);

/// Simulates `runs` runs with the seeds from `firstSeed` up, on as many threads as there are processors.
/// Returns their outcomes in the order of the seeds.
std::vector<Outcome> runTrials(const Scenario& scenario, int runs, std::uint64_t firstSeed = 1);

}  // namespace zor::simulator
