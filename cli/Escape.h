#pragma once

#include <string>
#include <string_view>

namespace zor::cli {

/// `bytes` for a terminal: printable ASCII as it is, any other byte as `\xNN`, a backslash as `\\`.
std::string printable(std::string_view bytes);

/// `bytes` for JSON: each byte becomes the code point of its value, so bytes that are no UTF-8 survive. A
/// writer that keeps to ASCII shows the bytes from 0x7F up as `\u00NN`.
std::string codePoints(std::string_view bytes);

}  // namespace zor::cli
