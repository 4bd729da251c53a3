#pragma once

#include <cstddef>
#include <cstdint>

namespace zor::receiver {

/// CRC-8 with generator x^8 + x^2 + x + 1, least significant bit first, initial value 0, no final step.
/// Returns 0 for no bytes, for which `bytes` may be null, and 0x20 for the ASCII digits 1 to 9.
std::uint8_t crc8(const std::uint8_t* bytes, std::size_t length);

}  // namespace zor::receiver
