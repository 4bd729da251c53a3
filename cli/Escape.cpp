#include "cli/Escape.h"

#include <charconv>

#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

void addHex(std::string& text, std::uint8_t byte) {
  text += kDigits[byte >> 4];
  text += kDigits[byte & 0xF];
}

}  // namespace

std::string printable(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    if (c == '\\') {
      text += "\\\\";
    } else if (c >= ' ' && c <= '~') {
      text += c;
    } else {
      text += "\\x";
      addHex(text, static_cast<std::uint8_t>(c));
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

std::string toHex(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) addHex(text, byte);
  return text;
}

std::vector<std::uint8_t> fromHex(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const std::string_view pair = text.substr(i, 2);
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(pair.data(), pair.data() + pair.size(), byte, 16);
    if (pair.size() != 2 || error != std::errc() || end != pair.data() + 2) {
      throw WrongUse("'" + printable(text) +
                     "' is not hexadecimal: give two digits 0-9 a-f for each byte, as 01b361");
    }
    bytes.push_back(byte);
  }
  return bytes;
}

}  // namespace zor::cli
