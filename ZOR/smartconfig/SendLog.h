#pragma once

#include <cstdint>

namespace zor {

/// Logs the sends of one sender that failed, as "m)warning %d" with the system's error number.
///
/// The first failure is logged at once, and so is one with another error than the one before. The same error
/// is logged at most once a second, with the number of failures that the line stands for: "m)warning 101 (85
/// times)". A sender without a network fails 85 times a second.
class SendLog {
 public:
  /// `mark` is "m" or "b".
  explicit SendLog(const char* mark) : mark_(mark) {}
  SendLog(const SendLog&) = delete;
  SendLog& operator=(const SendLog&) = delete;

  /// Takes a failure. Sender's thread.
  void add(std::int32_t error);

  /// Writes the line for the failures that have none yet, if there are any. Sender's thread, at the end of
  /// its run: not in a destructor, because the application's log sink may end the thread.
  void flush();

 private:
  const char* mark_;
  std::int32_t error_ = 0;               ///< The latest failure's.
  std::int32_t waiting_ = 0;             ///< Failures since the latest line.
  std::int64_t nextLineMs_ = INT64_MIN;  ///< On the monotonic clock.
};

}  // namespace zor
