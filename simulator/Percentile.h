#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

namespace zor::simulator {

/// Returns the value that a `share` (0 to 1) of `values` does not exceed, or 0 when there are no values.
inline double percentile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  const double rank = std::ceil(share * static_cast<double>(values.size()));
  const auto index = std::min(values.size() - 1, static_cast<std::size_t>(std::max(rank, 1.0)) - 1);
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(index), values.end());
  return values[index];
}

inline double median(const std::vector<double>& values) {
  return percentile(values, 0.5);
}

}  // namespace zor::simulator
