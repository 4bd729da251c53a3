#include "receiver/decoder/Crc8.h"

#include <array>

namespace zor::receiver {
namespace {

constexpr std::uint8_t kReversedGenerator = 0xe0;

constexpr std::array<std::uint8_t, 256> makeTable() {
  std::array<std::uint8_t, 256> table{};
  for (unsigned index = 0; index < table.size(); ++index) {
    unsigned value = index;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) != 0 ? kReversedGenerator : 0u);
    table[index] = static_cast<std::uint8_t>(value);
  }
  return table;
}

constexpr std::array<std::uint8_t, 256> kTable = makeTable();

}  // namespace

std::uint8_t crc8(const std::uint8_t* bytes, std::size_t length) {
  std::uint8_t crc = 0;
  for (std::size_t i = 0; i < length; ++i) crc = kTable[crc ^ bytes[i]];
  return crc;
}

}  // namespace zor::receiver
