#include "ZOR/smartconfig/SendLog.h"

#include "ZOR/net/Stopwatch.h"
#include "ZOR/platform/Log.h"

namespace zor {
namespace {

constexpr std::int64_t kLineIntervalMs = 1000;

}  // namespace

void SendLog::add(std::int32_t error) {
  const bool isNew = error != error_;
  if (isNew) flush();
  error_ = error;
  ++waiting_;
  const std::int64_t now = steadyMs();
  if (!isNew && now < nextLineMs_) return;
  nextLineMs_ = now + kLineIntervalMs;
  flush();
}

void SendLog::flush() {
  if (waiting_ == 1) log("%s)warning %d", mark_, static_cast<int>(error_));
  if (waiting_ > 1)
    log("%s)warning %d (%d times)", mark_, static_cast<int>(error_), static_cast<int>(waiting_));
  waiting_ = 0;
}

}  // namespace zor
