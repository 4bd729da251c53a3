#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zor::cli {

/// `bytes` for a terminal: printable ASCII as it is, any other byte as `\xNN`, a backslash as `\\`.
std::string printable(std::string_view bytes);

/// `bytes` for JSON: each byte becomes the code point of its value, so bytes that are no UTF-8 survive. A
/// writer that keeps to ASCII shows the bytes from 0x7F up as `\u00NN`.
std::string codePoints(std::string_view bytes);

/// Two lower-case hexadecimal digits a byte.
std::string toHex(const std::vector<std::uint8_t>& bytes);

/// The bytes that `text` gives, two hexadecimal digits each. Throws `WrongUse` for anything else.
std::vector<std::uint8_t> fromHex(std::string_view text);

}  // namespace zor::cli
