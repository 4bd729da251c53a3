#include "cli/Hex.h"

#include <charconv>

#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {

std::string toHex(const std::vector<std::uint8_t>& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
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
                     "' is not hexadecimal: give two digits 0-9 a-f for each byte, such as 01b361");
    }
    bytes.push_back(byte);
  }
  return bytes;
}

}  // namespace zor::cli
