#pragma once

#include <cstdint>
#include <string>

namespace zor::cli {

/// What a negative `ZorDeviceState::smartStatus` means and what to try, in one line. `error` is the system's
/// error number in the channel's report.
std::string explainSmartConfig(std::int32_t status, std::int32_t error);

}  // namespace zor::cli
