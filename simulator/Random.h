#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace zor::simulator {

/// A small random number generator (SplitMix64). The same seed gives the same run on every machine, no matter
/// how many threads share the runs.
class Random {
 public:
  using result_type = std::uint64_t;

  /// Neighbouring seeds give unrelated sequences.
  explicit Random(std::uint64_t seed) : state_(mix(seed)) {}

  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return UINT64_MAX; }

  result_type operator()() { return mix(state_ += 0x9E3779B97F4A7C15U); }

  /// Returns a number from 0 up to 1, exclusive.
  double fraction() { return static_cast<double>((*this)() >> 11) * 0x1p-53; }

  /// Returns a number from 0 up to `limit`, exclusive.
  std::int64_t below(std::int64_t limit) {
    return static_cast<std::int64_t>(fraction() * static_cast<double>(limit));
  }

  /// Returns one of `choices`, which must not be empty.
  template <class Choices>
  const auto& oneOf(const Choices& choices) {
    return choices[static_cast<std::size_t>(below(static_cast<std::int64_t>(std::size(choices))))];
  }

  /// Returns an exponentially distributed number.
  double exponential(double mean) { return -mean * std::log(1 - fraction()); }

 private:
  static result_type mix(std::uint64_t bits) {
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31);
  }

  std::uint64_t state_;
};

}  // namespace zor::simulator
