#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

/// Size of the buffer in which the senders build a version 3 packet, bytes.
inline constexpr std::int32_t kZorPacketV3BufferSize = 256;

/// Builds the version 3 packet: CRC-8 of what follows, SSID length, pass phrase length, SSID, pass
/// phrase.
///
/// `out` holds the packet, at most 99 bytes; a sender reads one byte after an odd one. Of the SSID
/// 32 bytes are taken, of the pass phrase 64. Returns the packet's length, 3..99. Any thread.
ZOR_API std::int32_t ZorBuildPacketSmartConfigV3(void* out, const char* ssid, const char* password);
