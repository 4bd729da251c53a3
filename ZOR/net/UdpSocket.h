#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

/// \file
/// IPv4 UDP sockets. A descriptor is a plain integer, negative for none, and belongs to the caller. Sockets
/// are bound to the wildcard address, closed on exec, and raise no SIGPIPE; `errno` says why one could not be
/// opened. Any thread may call the functions; one thread at a time uses a descriptor.

/// The socket could not be created, or not set up as `ZorSetInterface` and `ZorSetSocketHook` ask.
inline constexpr std::int32_t kZorNoSocket = -1;
inline constexpr std::int32_t kZorBindFailed = -2;    ///< `ZorUdpInit`: the port is taken.
inline constexpr std::int32_t kZorOptionFailed = -2;  ///< `ZorUdpMcInit`, `ZorUdpBcInit`: no SO_BROADCAST.
inline constexpr std::int32_t kZorSenderBindFailed = -3;  ///< `ZorUdpMcInit`, `ZorUdpBcInit`.

/// The limited broadcast address (RFC 919): every host of the network.
inline constexpr const char* kZorEveryHost = "255.255.255.255";

/// Opens a socket on local `port`, its low 16 bits in host order; 0 lets the system choose.
/// Returns the descriptor, `kZorNoSocket` or `kZorBindFailed`.
ZOR_API std::int32_t ZorUdpInit(std::int32_t port);

/// Opens a socket that may broadcast, on a port of the system's choice, for multicast datagrams.
/// Time to live and loop-back stay the system's, and so does the interface unless `ZorSetInterface` names
/// one. Returns the descriptor, `kZorNoSocket`, `kZorOptionFailed` or `kZorSenderBindFailed`.
ZOR_API std::int32_t ZorUdpMcInit();

/// The same for broadcast datagrams.
ZOR_API std::int32_t ZorUdpBcInit();

/// Closes `descriptor`; a negative one is ignored.
ZOR_API void ZorUdpClose(std::int32_t descriptor);

/// Receives one datagram, waiting at most 10 ms for it.
///
/// `buffer` holds at least `length` + 1 bytes, `length` being 0 or more: a longer datagram is cut at
/// `length`, and a NUL is stored after what arrived. `sourceText`, if not null, holds at least 16 bytes and
/// receives the sender's dotted-quad address; `*sourcePort`, if not null, its port in host order. Both are
/// left alone when nothing arrives. Returns the count of bytes; 0 when nothing came in time, for an empty
/// datagram and, at once, for a negative descriptor; negative for an error.
ZOR_API std::int32_t ZorUdpRecvData(std::int32_t descriptor, void* buffer, std::int32_t length,
                                    char* sourceText, std::uint32_t* sourcePort);

/// Sends `length` bytes, 0 or more, to `destinationText`, `port` (host order). The address is read strictly
/// as a dotted quad, else as `inet_addr` reads it: short and hexadecimal forms are taken, and text that is no
/// address at all goes to 255.255.255.255. Returns the bytes sent, or -1.
ZOR_API std::int32_t ZorUdpSendData(std::int32_t descriptor, const void* buffer, std::int32_t length,
                                    const char* destinationText, std::uint16_t port);
