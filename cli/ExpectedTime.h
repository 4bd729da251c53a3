#pragma once

#include <string>

#include "receiver/analysis/Report.h"

namespace zor::cli {

/// How long a module needs, by the simulator, for a run such as `leg` shows: its channels, its loss, its pace
/// if that is known, else default pacing, and a packet as long as its. Such as "about 12 s". Takes up to some
/// seconds.
std::string expectedTime(const receiver::LegReport& leg);

}  // namespace zor::cli
