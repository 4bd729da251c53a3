#pragma once

#include <cstdint>

// What `ZorDeviceState::upgradeStatus` holds. 2..99 are per cent; 100 and above are final.

inline constexpr std::int32_t kZorUpgradeRequested = 0;
inline constexpr std::int32_t kZorUpgradeCommandSent = 1;
inline constexpr std::int32_t kZorUpgradeAccepted = 2;
inline constexpr std::int32_t kZorUpgradeDone = 100;
inline constexpr std::int32_t kZorUpgradeSilence = -100;     ///< No valid answer for over 10 s.
inline constexpr std::int32_t kZorUpgradeNotHttp = -111;     ///< The URL does not begin with "http://".
inline constexpr std::int32_t kZorUpgradeUrlRefused = -112;  ///< No path, or too long or malformed.
inline constexpr std::int32_t kZorUpgradeNoSocket = -121;    ///< No socket, or no worker, to be had.
inline constexpr std::int32_t kZorUpgradeBindFailed = -122;
