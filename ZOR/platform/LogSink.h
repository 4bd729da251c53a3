#pragma once

#include <functional>

#include "ZOR/platform/Export.h"

/// Receives one log line, NUL-terminated, without a line end. The text may hold the SSID and the
/// pass phrase as they were given, so treat it as bytes and as secret.
using ZorLogSink = std::function<void(const char* line)>;

/// Sends the library's log lines to `sink`; an empty sink restores the system log, the default.
///
/// Any thread may call it. The sink itself is called from the application's thread and from the
/// workers, several at a time, and should return soon: a sender waits for it. A line that is being
/// written while the sink is replaced may still reach the old one, which stays alive until then.
/// What a sink throws is dropped. A sink must not start a worker: the start would wait
/// for the worker that waits for the sink.
ZOR_API void ZorSetLogSink(ZorLogSink sink);

/// Writes one NUL-terminated line where the library's own lines go. Any thread.
ZOR_API void ZorLogLine(const char* line);
