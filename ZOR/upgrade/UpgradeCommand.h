#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

inline constexpr std::int32_t kZorUrlNotHttp = -1;  ///< The URL does not begin with "http://".
inline constexpr std::int32_t kZorUrlRefused = -2;  ///< The URL has no path, or is too long or malformed.

/// Size of the buffer that takes the command data, bytes.
inline constexpr std::int32_t kZorUpgradeCmdDataSize = 512;

/// Turns `URL`, "http://host[:port]/path", into the upgrade command's data: "host=%s,file=%s" or
/// "host=%s,port=%s,file=%s", where the file is all from the first "/" on.
///
/// `out` holds `kZorUpgradeCmdDataSize` bytes. Returns 0; `kZorUrlNotHttp` when the text does not
/// begin with "http://"; `kZorUrlRefused` when no "/" follows, when a ":" comes after that "/", when
/// the host has 128 bytes or more or the port 16 or more, when there is a control character, or when
/// the whole command line would be longer than 512 bytes. `out` is then left alone. Any thread.
ZOR_API std::int32_t ZorBuildUpgradeCmdData(const char* URL, char* out);
