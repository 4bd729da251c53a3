#include "ZOR/protocol/LineReader.h"

#include <algorithm>

#include "ZOR/protocol/LineScanners.h"

namespace zor {
namespace {

/// ASCII only: the process's locale has no say in what a tag is.
char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool beginsWith(std::string_view line, std::string_view tag) {
  return line.size() >= tag.size() &&
         std::equal(tag.begin(), tag.end(), line.begin(),
                    [](char expected, char c) { return expected == lowerCase(c); });
}

}  // namespace

bool LineReader::open(char* line, std::int32_t length, std::string_view tag) {
  if (!beginsWith({line, static_cast<std::size_t>(length)}, tag)) return false;
  ZorTrim(line);
  line_ = line;
  // Not the trimmed length: what was trimmed are NULs now, which end the last value.
  length_ = length;
  position_ = GetValue(line, length, static_cast<std::int32_t>(tag.size()), id_);
  return true;
}

bool LineReader::nextPair() {
  if (position_ >= length_) return false;
  position_ = GetKeyValue(line_, length_, position_, key_, value_);
  return true;
}

}  // namespace zor
