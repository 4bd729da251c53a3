#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "ZOR/protocol/LineScanners.h"

// The line scanners once more, written for being obvious, to compare the real ones with.

struct SlowField {
  std::string text;
  std::size_t next;
};

inline SlowField slowValue(const std::string& line, std::size_t start) {
  const std::size_t colon = line.find(':', start);
  if (colon == std::string::npos) return {line.substr(start), line.size()};
  return {line.substr(start, colon - start), colon + 1};
}

struct SlowPair {
  std::string key, value;
  std::size_t next;
  bool found;  ///< There was an '='.
};

inline SlowPair slowKeyValue(const std::string& line, std::size_t start) {
  const std::size_t equals = line.find('=', start);
  if (equals == std::string::npos) return {"", "", line.size(), false};
  const std::size_t comma = std::min(line.find(',', equals), line.size());
  const std::string pair = line.substr(start, comma - start);
  const std::size_t last = pair.rfind('=');
  return {pair.substr(0, last), pair.substr(last + 1), std::min(comma + 1, line.size()), true};
}

inline std::string slowTrim(const std::string& text) {
  return text.substr(0, text.find_last_not_of("\t\n\r ") + 1);
}

/// True when the scanners do on `line`, from `start` on, what the obvious ones do. Every buffer has
/// exactly the promised size, so that a sanitizer sees a byte too many.
inline bool scannersAgree(const std::string& line, std::size_t start) {
  const auto buffer = [&] { return std::make_unique<char[]>(line.size() + 1); };
  const auto holds = [](const std::unique_ptr<char[]>& out, const std::string& text) {
    return std::memcmp(out.get(), text.c_str(), text.size() + 1) == 0;
  };
  const auto exact = std::make_unique<char[]>(line.size());
  line.copy(exact.get(), line.size());
  const auto length = static_cast<std::int32_t>(line.size()), from = static_cast<std::int32_t>(start);
  const auto key = buffer(), value = buffer(), trimmed = buffer();

  const SlowField field = slowValue(line, start);
  const std::int32_t afterField = GetValue(exact.get(), length, from, value.get());
  if (afterField != static_cast<std::int32_t>(field.next) || !holds(value, field.text)) return false;

  const SlowPair pair = slowKeyValue(line, start);
  value[line.size()] = '#';
  const std::int32_t afterPair = GetKeyValue(exact.get(), length, from, key.get(), value.get());
  if (afterPair != static_cast<std::int32_t>(pair.next)) return false;
  if (!holds(key, pair.key) || !holds(value, pair.value)) return false;
  if (!pair.found && value[line.size()] != '\0') return false;

  std::strcpy(trimmed.get(), line.c_str());
  ZorTrim(trimmed.get());
  return holds(trimmed, slowTrim(line.c_str()));
}
