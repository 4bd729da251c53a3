#pragma once

#include <cstdint>
#include <string_view>

namespace zor {

/// Length of the longest module line that is received, bytes.
inline constexpr std::int32_t kMaxLineLength = 1024;

/// How the lines that a module sends start; compared without regard to case.
inline constexpr std::string_view kNotificationTag = "xcmd_notify:";
inline constexpr std::string_view kResponseTag = "xcmd_rsp:";

/// Takes one received line apart: "tag id:key=value,key=value,...".
///
/// Every text that it hands out is NUL-terminated, lies in the reader and lasts until the next call.
class LineReader {
 public:
  /// Opens the `length` bytes at `line`, at most `kMaxLineLength`, and a NUL after them, and reads
  /// the id. The line is trimmed in place and must stay until the last pair is read. False, with the
  /// line untouched, when it does not start with `tag`.
  bool open(char* line, std::int32_t length, std::string_view tag);

  /// The field after the tag.
  const char* id() const { return id_; }

  /// Steps to the next pair; false after the last. A piece without '=' is a pair of empty texts.
  bool nextPair();

  const char* key() const { return key_; }
  const char* value() const { return value_; }

  /// What follows the pair, to the line's end.
  const char* rest() const { return line_ + position_; }

 private:
  const char* line_ = nullptr;
  std::int32_t length_ = 0;
  std::int32_t position_ = 0;
  char id_[kMaxLineLength + 1];
  char key_[kMaxLineLength + 1];
  char value_[kMaxLineLength + 1];
};

}  // namespace zor
