#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

/// Size of the buffer in which a version 5 packet is built, bytes. The packet is at most 100 bytes; the
/// zeros after it are sent as the second byte of an odd packet's last frame.
inline constexpr std::int32_t kZorPacketV5BufferSize = 128;

/// Builds the version 5 packet: 0x10 + append length, CRC-8 of the payload, SSID length, pass phrase
/// length, then the payload: SSID, pass phrase, application data.
///
/// `out` holds `kZorPacketV5BufferSize` bytes, zero before the call. Of the SSID 32 bytes are taken,
/// of the pass phrase 64, and of the `appendLength` application bytes (0..16; `append` may be null
/// when it is 0) as many as keep the payload within 96. Returns the packet's length, 4..100. Any thread.
ZOR_API std::int32_t ZorBuildPacketSmartConfigV5(void* out, const char* ssid, const char* password,
                                                 const void* append, std::uint32_t appendLength);
