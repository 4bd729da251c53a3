#pragma once

#include <cstdint>
#include <string_view>

#include "ZOR/protocol/LineReader.h"

namespace zor {

/// Reads one response of a module and says what it does to the upgrade's status. No I/O, no clock.
class UpgradeAnswer {
 public:
  /// Opens the `length` bytes at `line`, at most `kMaxLineLength`, and a NUL after them; they are
  /// trimmed in place and stay until `applyTo` has returned. False when they are no response.
  bool open(char* line, std::int32_t length);

  /// The status that follows `status`: the same when the response says nothing about it. Call it once
  /// after each `open` that succeeded.
  std::int32_t applyTo(std::int32_t status);

 private:
  bool findNumber(std::string_view key, std::int32_t& number);

  LineReader reader_;
};

}  // namespace zor
