#pragma once

#include <cstdint>
#include <vector>

#include "bench/simulator/PhonePlan.h"
#include "bench/simulator/Radio.h"
#include "receiver/Decoder.h"

namespace zor::bench {

/// When a module begins to listen: before the phones send, or at a random moment of their runs.
enum class Listens { fromBegin, anyTime };

/// Phones that provision at once, and the air between them and the module.
struct Scenario {
  std::vector<const PhonePlan*> phones;
  RadioConditions radio;
  Listens listens = Listens::anyTime;
};

/// When a run that does not provision is given up, seconds.
inline constexpr double kGiveUpSeconds = 100;

struct Outcome {
  double decoderSeconds = kGiveUpSeconds;    ///< Until the decoder had told every phone's credentials.
  double boundSeconds = kGiveUpSeconds;      ///< Until each piece of information had arrived once.
  std::vector<receiver::Credentials> wrong;  ///< Those that no phone sent.
};

/// One run in virtual time.
Outcome runTrial(const Scenario& scenario, std::uint64_t seed, receiver::Decoder& decoder);

/// `runs` trials with the seeds from `firstSeed` up, on as many threads as there are processors.
std::vector<Outcome> runTrials(const Scenario& scenario, int runs, std::uint64_t firstSeed = 1);

}  // namespace zor::bench
