#pragma once

#include <cstddef>

namespace zor {

/// Overwrites `size` bytes with zeros. Stores through a volatile pointer stay even when the memory
/// is never read again, so a secret does not outlive its buffer.
inline void wipe(void* memory, std::size_t size) {
  auto* const bytes = static_cast<volatile unsigned char*>(memory);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = 0;
}

}  // namespace zor
