#pragma once

#include <memory>
#include <vector>

#include "simulator/FrameSource.h"
#include "simulator/PhoneSender.h"
#include "simulator/Trial.h"

namespace zor::simulator {

/// One run of a phone: its present one, or the one before.
struct PhoneRun {
  const PhonePlan* plan;
  Transmitter from;
  RunTimes times;
  bool awaited;  ///< The module is to learn these credentials.
};

/// Returns the runs of a scenario's phones, with random addresses, overheads and times.
std::vector<PhoneRun> makeRuns(const Scenario& scenario, Random& random);

/// Everything that sends in a scenario. A frame's `run` is an index into `runs`. Scenario and `random` must
/// outlive the sources.
std::vector<std::unique_ptr<FrameSource>> makeSources(const Scenario& scenario,
                                                      const std::vector<PhoneRun>& runs, Random& random);

}  // namespace zor::simulator
