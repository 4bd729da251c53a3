#include "cli/Escape.h"

#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cwchar>
#include <cwctype>
#include <iterator>

#include "cli/Hex.h"
#include "cli/Utf8.h"

namespace zor::cli {
namespace {

constexpr char kUtf8Name[] = "UTF-8";

struct Range {
  char32_t first, last;
};

/// Line and paragraph separators, format characters (Unicode's Zl, Zp and Cf), letters without a shape, and
/// private use, all of which a locale may call printable. In ascending order.
constexpr Range kHidden[] = {
    {0xAD, 0xAD},       {0x34F, 0x34F},     {0x600, 0x605},     {0x61C, 0x61C},     {0x6DD, 0x6DD},
    {0x70F, 0x70F},     {0x890, 0x891},     {0x8E2, 0x8E2},     {0x115F, 0x1160},   {0x17B4, 0x17B5},
    {0x180B, 0x180F},   {0x200B, 0x200F},   {0x2028, 0x202E},   {0x2060, 0x206F},   {0x3164, 0x3164},
    {0xE000, 0xF8FF},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},   {0x110BD, 0x110BD},
    {0x110CD, 0x110CD}, {0x13430, 0x1345F}, {0x1BCA0, 0x1BCAF}, {0x1D173, 0x1D17A}, {0xE0000, 0x10FFFF}};

bool isHidden(char32_t value) {
  const Range* const range = std::ranges::lower_bound(kHidden, value, {}, &Range::last);
  return range != std::end(kHidden) && value >= range->first;
}

/// Every plane ends with two code points that are not characters, which a locale may not know.
bool isNoncharacter(char32_t value) {
  return (value & 0xFFFE) == 0xFFFE || (value >= 0xFDD0 && value <= 0xFDEF);
}

/// The number of bytes at the start of `bytes` that make one printable character; 0 when they make none.
std::size_t printableLength(std::string_view bytes) {
  const auto [value, length] = firstCodePoint(bytes);
  if (length == 0) return 0;
  if (value < 0x80) return value >= ' ' && value <= '~' ? 1 : 0;
  static const bool kIsUtf8Terminal = std::string_view(nl_langinfo(CODESET)) == kUtf8Name;
  const bool shows = kIsUtf8Terminal && !isHidden(value) && !isNoncharacter(value) &&
                     std::iswprint(static_cast<std::wint_t>(value)) != 0;
  return shows ? length : 0;
}

}  // namespace

void useCharacterSet() {
  const bool taken = std::setlocale(LC_CTYPE, "") != nullptr;
  if (!taken || nl_langinfo(CODESET) != std::string_view(kUtf8Name)) std::setlocale(LC_CTYPE, "C");
}

std::string printable(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const std::size_t length = printableLength(bytes);
    if (length == 0) {
      text += "\\x" + toHex({static_cast<std::uint8_t>(bytes[0])});
    } else if (bytes[0] == '\\') {
      text += "\\\\";
    } else {
      text += bytes.substr(0, length);
    }
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::size_t columns(std::string_view text) {
  std::size_t count = 0;
  while (!text.empty()) {
    const auto [value, length] = firstCodePoint(text);
    const int width = wcwidth(static_cast<wchar_t>(value));
    count += width < 0 ? 1 : static_cast<std::size_t>(width);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return count;
}

std::string_view cutToColumns(std::string_view text, std::size_t limit) {
  std::size_t bytes = 0;
  for (std::size_t left = limit; bytes < text.size();) {
    const std::size_t length = std::max<std::size_t>(firstCodePoint(text.substr(bytes)).length, 1);
    const std::size_t width = columns(text.substr(bytes, length));
    if (width > left) break;
    left -= width;
    bytes += length;
  }
  return text.substr(0, bytes);
}

}  // namespace zor::cli
