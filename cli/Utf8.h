#pragma once

#include <cstddef>
#include <string_view>

namespace zor::cli {

/// A character and the number of bytes that it takes.
struct CodePoint {
  char32_t value = 0;
  std::size_t length = 0;  ///< 0 where the bytes are not UTF-8.
};

/// The code point at the start of `bytes`, which is not empty, by the rules of RFC 3629: none longer than
/// needed, no surrogates, none above U+10FFFF.
CodePoint firstCodePoint(std::string_view bytes);

/// True when all of `bytes` is UTF-8.
bool isUtf8(std::string_view bytes);

}  // namespace zor::cli
