#pragma once

#include <string>

#include "cli/Decoded.h"

namespace zor::cli {

/// What a capture said as one page of HTML, which needs nothing else: no network, no other file.
std::string reportPage(const Decoded& decoded);

}  // namespace zor::cli
