#pragma once

#include <string>

namespace zor::cli {

/// The present moment in ISO 8601, in UTC with milliseconds: "2026-03-01T12:00:00.123Z".
std::string timeStamp();

}  // namespace zor::cli
