#pragma once

#include <vector>

#include "receiver/analysis/Verdict.h"

namespace zor::cli {

/// The spacing of the named paces.
const std::vector<receiver::KnownPace>& knownPaces();

}  // namespace zor::cli
