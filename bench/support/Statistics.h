#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

namespace zor::bench {

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

/// Returns the highest mean, with a confidence of 95 %, of a rare event that was counted `count` times
/// (Poisson distribution). For a count of 0 it is 3.
inline double highestMean(std::size_t count) {
  double low = static_cast<double>(count);
  double high = low + 4 * std::sqrt(low + 1) + 1;
  while (high - low > 1e-3) {
    const double mean = (low + high) / 2;
    double term = std::exp(-mean);
    double atMostCount = term;
    for (std::size_t i = 1; i <= count; ++i) atMostCount += term *= mean / static_cast<double>(i);
    (atMostCount > 0.05 ? low : high) = mean;
  }
  return high;
}

/// Returns `value` divided by `baseline`, or NaN when that is 0.
inline double ratio(double value, double baseline) {
  return baseline == 0 ? NAN : value / baseline;
}

}  // namespace zor::bench
