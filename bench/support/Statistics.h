#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "simulator/Percentile.h"
#include "simulator/Random.h"

namespace zor::bench {

using simulator::median;
using simulator::percentile;

/// Returns `value` divided by `baseline`, or NaN when that is 0.
inline double ratio(double value, double baseline) {
  return baseline == 0 ? NAN : value / baseline;
}

/// A range that holds a figure with a confidence of 95 %.
struct Interval {
  double low;
  double high;
};

/// Returns the range of the ratio of two medians, by resampling both (bootstrap).
inline Interval ratioInterval(const std::vector<double>& values, const std::vector<double>& baseline) {
  constexpr int kResamples = 400;
  simulator::Random random(1);
  const auto resampledMedian = [&](const std::vector<double>& from) {
    std::vector<double> drawn(from.size());
    for (double& value : drawn) value = random.oneOf(from);
    return median(drawn);
  };
  std::vector<double> ratios;
  ratios.reserve(kResamples);
  for (int i = 0; i < kResamples; ++i)
    ratios.push_back(ratio(resampledMedian(values), resampledMedian(baseline)));
  return {percentile(ratios, 0.025), percentile(ratios, 0.975)};
}

/// Returns the highest mean, with a confidence of 95 %, of a rare event that was counted `count` times
/// (Poisson distribution). For a count of 0 it is 3.
inline double highestMean(std::size_t count) {
  auto low = static_cast<double>(count);
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

}  // namespace zor::bench
