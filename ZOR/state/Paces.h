#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// A named set of the pacing values for `ZorSuite::SmartConfigV5_SetProperty`, in its order.
struct ZorPace {
  std::string_view name;                ///< What `ZorFindPace` looks for.
  std::array<std::uint8_t, 14> values;  ///< Lengths in bytes, intervals in milliseconds, repeats: Tunables.h.
};

/// The paces that are known by name.
inline constexpr ZorPace kZorPaces[] = {
    // What the tunables hold at load.
    {"default", {30, 30, 100, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}},
    // The shortest intervals, so the most load on the network.
    {"fast", {30, 8, 0, 0, 1, 1, 5, 30, 9, 100, 0, 1, 1, 5}},
    // Somewhat longer intervals than fast, and the same repeats.
    {"robust", {30, 12, 0, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}},
};

/// Returns the pace called `name`, or null when there is none. It lives as long as the process.
constexpr const ZorPace* ZorFindPace(std::string_view name) {
  for (const ZorPace& pace : kZorPaces) {
    if (pace.name == name) return &pace;
  }
  return nullptr;
}
