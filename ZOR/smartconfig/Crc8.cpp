#include "ZOR/smartconfig/Crc8.h"

#include <array>

namespace {

constexpr unsigned kReversedGenerator = 0xE0;

constexpr std::array<std::uint8_t, 256> makeTable() {
  std::array<std::uint8_t, 256> table{};
  for (unsigned i = 0; i < table.size(); ++i) {
    unsigned remainder = i;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder >> 1) ^ ((remainder & 1U) != 0 ? kReversedGenerator : 0U);
    }
    table[i] = static_cast<std::uint8_t>(remainder);
  }
  return table;
}

constexpr std::array<std::uint8_t, 256> __crc8_tbl = makeTable();

}  // namespace

unsigned ZorGetCrc8(const void* bytes, std::uint32_t length) {
  const auto* next = static_cast<const std::uint8_t*>(bytes);
  std::uint8_t crc = 0;
  for (; length > 0; --length) crc = __crc8_tbl[crc ^ *next++];
  return crc;
}
