#pragma once

#include <string>
#include <vector>

namespace zor::cli {

/// A picture of how many of a simulation's runs have provisioned by when, as SVG. `seconds` is sorted and not
/// empty; the runs that took `giveUpSeconds` or more have not. `title` is plain ASCII.
std::string curveSvg(const std::vector<double>& seconds, double giveUpSeconds, const std::string& title);

}  // namespace zor::cli
