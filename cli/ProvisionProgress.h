#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/Output.h"

namespace zor::cli {

/// What a run shows of its progress.
struct ProvisionState {
  ZorRunReport report;
  std::size_t found = 0;               ///< New modules found.
  std::size_t expected = 1;            ///< New modules that end the run.
  bool sending = true;                 ///< False while it only listens.
  std::chrono::milliseconds left{};    ///< Of the present phase.
  std::chrono::milliseconds phase{1};  ///< How long the present phase lasts.
};

/// Shows a run's progress: a live line on a terminal, else a line every ten seconds, with JSON an event every
/// second.
class ProvisionProgress {
 public:
  explicit ProvisionProgress(Output& output) : output_(output) {}

  void show(const ProvisionState& state);

 private:
  using Clock = std::chrono::steady_clock;

  Output& output_;
  bool sending_ = true;                    ///< In what was shown last.
  Clock::time_point next_ = Clock::now();  ///< When the next line or event is due.
};

}  // namespace zor::cli
