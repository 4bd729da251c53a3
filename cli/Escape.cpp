#include "cli/Escape.h"

#include <cstdint>

#include "cli/Hex.h"

namespace zor::cli {

std::string printable(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    if (c == '\\') {
      text += "\\\\";
    } else if (c >= ' ' && c <= '~') {
      text += c;
    } else {
      text += "\\x" + toHex({static_cast<std::uint8_t>(c)});
    }
  }
  return text;
}

std::string codePoints(std::string_view bytes) {
  std::string utf8;
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {  // Two octets of UTF-8, RFC 3629.
      utf8 += static_cast<char>(0xC0 | (byte >> 6));
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

}  // namespace zor::cli
