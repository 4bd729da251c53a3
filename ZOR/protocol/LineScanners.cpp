#include "ZOR/protocol/LineScanners.h"

#include <cstddef>
#include <cstring>

namespace {

/// Copies line[from .. to) and a NUL.
void copyRange(const char* line, std::int32_t from, std::int32_t to, char* out) {
  const auto count = static_cast<std::size_t>(to - from);
  std::memcpy(out, line + from, count);
  out[count] = '\0';
}

bool isTrailingSpace(char c) {
  return c == '\t' || c == '\n' || c == '\r' || c == ' ';
}

}  // namespace

std::int32_t GetValue(const void* line, std::int32_t length, std::int32_t start, char* out) {
  const char* const text = static_cast<const char*>(line);
  for (std::int32_t i = start; i < length; ++i) {
    if (text[i] != ':') continue;
    copyRange(text, start, i, out);
    return i + 1;
  }
  copyRange(text, start, length, out);
  return length;
}

std::int32_t GetKeyValue(const void* line, std::int32_t length, std::int32_t start, char* key, char* value) {
  const char* const text = static_cast<const char*>(line);
  std::int32_t equals = -1;
  std::int32_t end = start;
  for (; end < length && (equals < 0 || text[end] != ','); ++end) {
    if (text[end] == '=') equals = end;
  }
  if (equals < 0) {
    key[0] = '\0';
    value[0] = '\0';
    value[length] = '\0';
    return length;
  }
  copyRange(text, start, equals, key);
  copyRange(text, equals + 1, end, value);
  return end < length ? end + 1 : length;
}

void ZorTrim(char* text) {
  for (std::size_t length = std::strlen(text); length > 0 && isTrailingSpace(text[length - 1]); --length) {
    text[length - 1] = '\0';
  }
}
