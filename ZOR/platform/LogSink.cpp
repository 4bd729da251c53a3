#include "ZOR/platform/LogSink.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

#include "ZOR/platform/DropExceptions.h"
#include "ZOR/platform/Log.h"
#include "ZOR/platform/Mutex.h"
#include "ZOR/platform/NeverDestroyed.h"
#include "ZOR/platform/SystemLog.h"
#include "ZOR/platform/Wipe.h"

namespace zor {
namespace {

/// Holds the longest line: a fixed text, a 32-byte SSID, a 64-byte pass phrase and a number. Wiped, as it may
/// hold the pass phrase.
struct Line {
  Line() = default;
  ~Line() { wipe(text, sizeof text); }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  char text[256];
};

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

}  // namespace

void log(const char* format, ...) {
  Line line;
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line.text, sizeof line.text, format, arguments);
  va_end(arguments);
  ZorLogLine(line.text);
}

}  // namespace zor

void ZorSetLogSink(ZorLogSink sink) {
  std::shared_ptr<const ZorLogSink> next;
  try {
    if (sink) next = std::make_shared<const ZorLogSink>(std::move(sink));
  } catch (const std::bad_alloc&) {
    return;  // Without memory the present sink stays.
  }
  zor::sinkSlot.value.swap(next);
}

void ZorLogLine(const char* line) {
  const std::shared_ptr<const ZorLogSink> sink = zor::sinkSlot.value.get();
  if (!sink) return zor::writeToSystemLog(line);
  zor::callAndDropExceptions([&] { (*sink)(line); });
}
