#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

/// \file
/// Senders that open their socket when they need one. All three work alike:
///
/// 1. A negative `*descriptor` is replaced by a new socket; if the system gives none, the result is
///    -1 and nothing was sent.
/// 2. `length` bytes go to `destinationText` (read as `ZorUdpSendData` reads it), `port` in host
///    order; the result is the number of bytes sent.
/// 3. A send that fails is logged with the system's error number, the socket is closed, `*descriptor`
///    becomes -1 and the result is 0: the next call opens a new socket.
///
/// The caller owns `*descriptor` and closes what it holds in the end. Any thread, one per descriptor.

/// Broadcasts; logs "b)warning %d".
ZOR_API std::int32_t ZorUdpBcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                      const char* destinationText, std::uint16_t port);

/// Multicasts; logs "m)warning %d". Stamps `smartLastMs` after each send of more than 0 bytes.
ZOR_API std::int32_t ZorSmartMcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                        const char* groupText, std::uint16_t port);

/// Broadcasts; logs "b)warning %d". Stamps `smartLastMs` after each send of more than 0 bytes.
ZOR_API std::int32_t ZorSmartBcSendData(std::int32_t* descriptor, const void* buffer, std::int32_t length,
                                        const char* destinationText, std::uint16_t port);
