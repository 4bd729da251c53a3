#pragma once

#include <chrono>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/NewModules.h"
#include "cli/ProvisionPlan.h"

namespace zor::cli {

/// What is known of a run that did not find its modules.
struct FailedRun {
  const ProvisionPlan& plan;
  const NewModules& modules;
  const ZorRunReport& report;
  bool sentWhole;                     ///< The packet was sent whole at least once.
  std::chrono::seconds stoodStill{};  ///< How long the process did not run.
};

/// Why it failed and what to try, in one line: the cause when it is known, else what is worth a check.
std::string explainRun(const FailedRun& run);

}  // namespace zor::cli
