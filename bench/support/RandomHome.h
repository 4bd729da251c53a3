#pragma once

#include <string>
#include <vector>

#include "simulator/Random.h"
#include "simulator/Trial.h"

namespace zor::bench {

/// Phones with random credentials, paces and length bases, and what each sent before it was corrected. Half
/// of the phones after the first share its network.
class RandomHome {
 public:
  /// `sent` names what the phones send, as `channelChoices` does; each chooses for itself when it is empty.
  RandomHome(const std::string& sent, std::int64_t phones, simulator::Random& random);

  /// The phones, which point into the home.
  std::vector<simulator::Phone> phones() const;

 private:
  std::vector<simulator::PhonePlan> plans_;
  std::vector<simulator::PhonePlan> earlierPlans_;
};

}  // namespace zor::bench
