#pragma once

#include <cstdint>

namespace zor {

/// Where modules take requests and answer them from, UDP.
inline constexpr std::uint16_t kModulePort = 25000;

// Request lines, printf formats. The response to a request carries its id back.

/// The argument is the id: how many requests were sent before.
inline constexpr char kInfoRequest[] = "xcmd_req:%d:cmd=info,\r\n";

/// The argument is what `ZorBuildUpgradeCmdData` makes.
inline constexpr char kUpgradeRequest[] = "xcmd_req:123:cmd=upgrade,%s\r\n";
inline constexpr char kUpgradeStatusRequest[] = "xcmd_req:321:cmd=upgradestatus\r\n";

inline constexpr std::int32_t kUpgradeId = 123;
inline constexpr std::int32_t kUpgradeStatusId = 321;

}  // namespace zor
