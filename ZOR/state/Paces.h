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
    // Each multicast cycle as a burst, so the most load on the network and the shortest waits.
    {"fast", {30, 3, 60, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}},
    // Multicasts at even intervals, for access points and modules that lose bursts.
    {"robust", {30, 12, 0, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}},
    // Bursts of multicasts and no broadcasts, so the least time on the air until a module has the
    // credentials.
    {"brief", {30, 3, 100, 0, 1, 1, 5, 0, 15, 100, 0, 1, 1, 5}},
};

/// Returns the pace called `name`, or null when there is none. It lives as long as the process.
constexpr const ZorPace* ZorFindPace(std::string_view name) {
  for (const ZorPace& pace : kZorPaces) {
    if (pace.name == name) return &pace;
  }
  return nullptr;
}
