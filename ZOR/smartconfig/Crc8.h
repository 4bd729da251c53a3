#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

/// CRC-8 of `length` bytes: generator x^8 + x^2 + x + 1, least significant bit first, start value 0,
/// no final exclusive or. 0 for no bytes; 0x20 for the nine digits "123456789". Any thread.
ZOR_API unsigned ZorGetCrc8(const void* bytes, std::uint32_t length);
