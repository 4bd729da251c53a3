#pragma once

#include <cstdint>

namespace zor {

/// What one receive found.
struct Received {
  std::int32_t length = -1;  ///< Bytes of the datagram, which may be empty; -1 without one.
  std::int32_t error = 0;    ///< The system's error number; 0 for a datagram or when none waits.
};

/// Receives one datagram without waiting: what `ZorUdpRecvData` does once there is something to receive, with
/// the same buffers. An empty datagram leaves them as they are; a negative descriptor is an error.
Received receiveNow(std::int32_t descriptor, void* buffer, std::int32_t length, char* sourceText,
                    std::uint32_t* sourcePort);

/// True when `error` says that the descriptor is no socket of ours any more: its number may be another's.
bool isForeign(std::int32_t error);

}  // namespace zor
