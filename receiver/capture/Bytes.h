#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "receiver/decoder/MacAddress.h"

namespace zor::receiver {

/// Bytes of a frame. Whoever reads checks the size first.
using Bytes = std::span<const std::uint8_t>;

inline std::uint32_t bigEndian16(Bytes bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes[at] << 8 | bytes[at + 1]);
}

inline std::uint32_t littleEndian16(Bytes bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes[at + 1] << 8 | bytes[at]);
}

inline std::uint32_t littleEndian32(Bytes bytes, std::size_t at) {
  return littleEndian16(bytes, at) | littleEndian16(bytes, at + 2) << 16;
}

inline MacAddress addressAt(Bytes bytes, std::size_t at) {
  MacAddress address;
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), address.size(), address.begin());
  return address;
}

}  // namespace zor::receiver
