#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zor::cli {

/// Takes the character set from LC_ALL, LC_CTYPE or LANG if it is UTF-8, else stays with ASCII. The process
/// has no other locale: the library and the parsers read bytes as they would in C. Call it once, first.
void useCharacterSet();

/// `bytes` for a terminal: what its character set can print as it is, any other byte as `\xNN`, a backslash
/// as `\\`. What changes the order of text, or shows nothing, or means something else to every reader
/// (controls, format characters, private use) is not printable.
std::string printable(std::string_view bytes);

/// The number of columns that `text`, which `printable` made, takes on a terminal.
std::size_t columns(std::string_view text);

/// The beginning of `text`, which `printable` made, that fits `limit` columns.
std::string_view cutToColumns(std::string_view text, std::size_t limit);

}  // namespace zor::cli
