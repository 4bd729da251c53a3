#include "cli/Utf8.h"

#include <cstdint>

namespace zor::cli {
namespace {

/// The first bytes from `low` to `high` announce `length` bytes, which make a code point from `least` up.
struct Form {
  std::size_t length;
  char32_t least;
  std::uint8_t low, high;
};

constexpr Form kForms[] = {
    {1, 0, 0x00, 0x7F}, {2, 0x80, 0xC0, 0xDF}, {3, 0x800, 0xE0, 0xEF}, {4, 0x10000, 0xF0, 0xF7}};

constexpr bool isCharacter(char32_t value) {
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

/// Reads a code point of `form`.
CodePoint read(std::string_view bytes, const Form& form) {
  if (bytes.size() < form.length) return {};
  char32_t value = static_cast<std::uint8_t>(bytes[0]) - form.low;
  for (const char c : bytes.substr(1, form.length - 1)) {
    const auto byte = static_cast<std::uint8_t>(c);
    if ((byte & 0xC0) != 0x80) return {};
    value = value << 6 | (byte & 0x3F);
  }
  if (value < form.least || !isCharacter(value)) return {};
  return {value, form.length};
}

}  // namespace

CodePoint firstCodePoint(std::string_view bytes) {
  const auto first = static_cast<std::uint8_t>(bytes[0]);
  for (const Form& form : kForms) {
    if (first >= form.low && first <= form.high) return read(bytes, form);
  }
  return {};
}

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = firstCodePoint(bytes).length;
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace zor::cli
