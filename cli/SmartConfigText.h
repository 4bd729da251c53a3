#pragma once

#include <cstdint>
#include <string>

namespace zor::cli {

/// What a code of ZOR/facade/SmartConfigStatus.h means and what to try, in one line.
std::string explainSmartConfig(std::int32_t status);

}  // namespace zor::cli
