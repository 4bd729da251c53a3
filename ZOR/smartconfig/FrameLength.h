#pragma once

#include <algorithm>
#include <cstdint>

#include "ZOR/state/Tunables.h"

namespace zor {

/// The length of a frame `added` bytes, 0 or more, above a channel's length base. A base may hold any number:
/// what would overflow is cut at the largest, which no datagram reaches.
inline std::int32_t frameLength(const ZorTunable& base, std::int32_t added) {
  return std::min<std::int32_t>(base, INT32_MAX - added) + added;
}

}  // namespace zor
