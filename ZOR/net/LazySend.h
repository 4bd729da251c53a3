#pragma once

#include <cstdint>

namespace zor {

/// What became of one datagram.
struct SendResult {
  /// What the public senders return: bytes, 0 after a failed send, -1 without a socket.
  std::int32_t sent = 0;
  /// The system's error number; 0 unless the send failed or there is no socket.
  std::int32_t error = 0;
  /// A socket was opened for it.
  bool opened = false;
};

/// A lazy sender of LazySenders.h which says all that happened and leaves the log to its caller.
using LazySender = SendResult (*)(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                  const char* destinationText, std::uint16_t port);

/// `ZorSmartMcSendData` without its log line.
SendResult sendMulticast(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                         const char* groupText, std::uint16_t port);

/// `ZorUdpBcSendData` without its log line.
SendResult sendBroadcast(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                         const char* destinationText, std::uint16_t port);

/// Logs a send that failed, but not a missing socket, as "%s)warning %d": `mark` and the system's error
/// number.
void logFailedSend(const SendResult& result, const char* mark);

}  // namespace zor
