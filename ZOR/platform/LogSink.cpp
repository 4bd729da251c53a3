#include "ZOR/platform/LogSink.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <utility>

#if defined(__ANDROID__)
#include <android/log.h>
#else
#include <syslog.h>
#endif

#include "ZOR/platform/Log.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/NeverDestroyed.h"
#include "ZOR/platform/Wipe.h"

namespace zor {
namespace {

/// Holds the longest line: a fixed text, a 32-byte SSID, a 64-byte pass phrase and a number.
constexpr std::size_t kLineSize = 256;

class SinkSlot {
 public:
  std::shared_ptr<const ZorLogSink> get() ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return sink_;
  }

  /// Leaves the old sink in `sink`, so that it is destroyed outside the lock.
  void swap(std::shared_ptr<const ZorLogSink>& sink) ZOR_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    sink_.swap(sink);
  }

 private:
  Mutex mutex_;
  std::shared_ptr<const ZorLogSink> sink_ ZOR_GUARDED_BY(mutex_);
};

constinit NeverDestroyed<SinkSlot> sinkSlot;

void writeToSystemLog(const char* line) {
#if defined(__ANDROID__)
  __android_log_write(ANDROID_LOG_INFO, "ZorSuite", line);
#else
  syslog(LOG_USER | LOG_INFO, "%s", line);
#endif
}

}  // namespace

void log(const char* format, ...) {
  char line[kLineSize];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  ZorLogLine(line);
  wipe(line, sizeof line);  // It may have held the pass phrase.
}

}  // namespace zor

void ZorSetLogSink(ZorLogSink sink) {
  std::shared_ptr<const ZorLogSink> next;
  try {
    if (sink) next = std::make_shared<const ZorLogSink>(std::move(sink));
  } catch (...) {
    return;  // Without memory the present sink stays.
  }
  zor::sinkSlot.value.swap(next);
}

void ZorLogLine(const char* line) {
  const std::shared_ptr<const ZorLogSink> sink = zor::sinkSlot.value.get();
  if (!sink) return zor::writeToSystemLog(line);
  try {
    (*sink)(line);
  } catch (...) {
    // A sink that fails must not end the worker that had something to say.
  }
}
