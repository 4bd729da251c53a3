#pragma once

#include <string>

#include "cli/Decoded.h"

namespace zor::cli {

/// A picture of the frames of each sender, leg by leg and in a row for each kind, as SVG.
std::string timelineSvg(const Decoded& decoded);

}  // namespace zor::cli
