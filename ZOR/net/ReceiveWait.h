#pragma once

#include <cstdint>

namespace zor {

/// How long a receive waits for a datagram, milliseconds. A worker that could not even wait rests as long: an
/// error that stays must not make it spin.
inline constexpr std::int32_t kReceiveWaitMs = 10;

}  // namespace zor
