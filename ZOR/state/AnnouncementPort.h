#pragma once

#include <array>
#include <cstdint>

/// The UDP port on which modules announce themselves unless a run names another.
inline constexpr std::int32_t kZorAnnouncementPort = 25010;

/// Returns the application data that name `port`, 1..65535, to a module: record type 1, low byte, high byte.
///
/// An application that listens on another port than `kZorAnnouncementPort` passes them to
/// `ZorSuite::SmartConfigV5_Append` before the start. Version 3 cannot carry them.
constexpr std::array<std::uint8_t, 3> ZorMakePortRecord(std::int32_t port) {
  return {1, static_cast<std::uint8_t>(port % 256), static_cast<std::uint8_t>(port / 256)};
}
