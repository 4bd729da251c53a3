#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/Environment.h"

namespace zor::simulator {

/// An air that benchmarks and zorctl know by name.
struct NamedAir {
  std::string name;
  Environment environment;  ///< Its `loss` is 0.
};

/// Quiet airs: losses one by one and in bursts, and losses one by one where an access point holds group
/// frames. "one by one" is the first.
const std::vector<NamedAir>& quietAirs();

/// Those and all others: strays, neighbours, corrected runs, delays, copies and more.
const std::vector<NamedAir>& airs();

/// Returns the one of `airs` that has this name, or null.
const NamedAir* findAir(std::string_view name);

}  // namespace zor::simulator
