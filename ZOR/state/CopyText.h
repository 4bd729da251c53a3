#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zor {

/// Replaces what `field` holds by `text`, cut at the field's size minus one and at the first NUL;
/// zeros fill the rest. `text` may lie in the field itself.
template <std::size_t Size>
void copyText(std::string_view text, char (&field)[Size]) {
  const std::string_view kept = text.substr(0, text.find('\0')).substr(0, Size - 1);
  if (!kept.empty()) std::memmove(field, kept.data(), kept.size());
  std::memset(field + kept.size(), 0, Size - kept.size());
}

}  // namespace zor
