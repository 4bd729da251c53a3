#pragma once

#include <cstddef>
#include <cstdint>

namespace zor::receiver {

/// CRC-8 with generator x^8 + x^2 + x + 1, least significant bit first, initial value 0, no final step.
/// \param bytes may be null when length is 0.
/// \return 0 for no bytes; 0x20 over the ASCII digits 1 to 9.
std::uint8_t crc8(const std::uint8_t* bytes, std::size_t length);

}  // namespace zor::receiver
