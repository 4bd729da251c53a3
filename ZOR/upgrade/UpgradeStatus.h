#pragma once

#include <cstdint>

/// \file
/// What `ZorDeviceState::upgradeStatus` holds. 2..99 are per cent; 100 and above are final.

inline constexpr std::int32_t kZorUpgradeRequested = 0;      ///< The worker has not begun yet.
inline constexpr std::int32_t kZorUpgradeCommandSent = 1;    ///< The worker sends the command.
inline constexpr std::int32_t kZorUpgradeAccepted = 2;       ///< The module has accepted it.
inline constexpr std::int32_t kZorUpgradeDone = 100;         ///< The module has finished.
inline constexpr std::int32_t kZorUpgradeSilence = -100;     ///< No valid answer for over 10 s.
inline constexpr std::int32_t kZorUpgradeNotHttp = -111;     ///< The URL does not begin with "http://".
inline constexpr std::int32_t kZorUpgradeUrlRefused = -112;  ///< No path, or too long or malformed.
inline constexpr std::int32_t kZorUpgradeNoSocket = -121;    ///< No socket could be created, or no worker.
inline constexpr std::int32_t kZorUpgradeBindFailed = -122;  ///< The socket could not be bound.
