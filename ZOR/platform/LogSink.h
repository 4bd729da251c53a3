#pragma once

#include <functional>

#include "ZOR/platform/Export.h"

/// Receives one log line, NUL-terminated, without a line end. The text may hold the SSID and the pass phrase
/// as they were given, line breaks and other control characters included: treat it as bytes and as secret.
using ZorLogSink = std::function<void(const char* line)>;

/// Sends the library's log lines to `sink`; an empty sink restores the default, the system's log.
///
/// 1. The default writes to the unified log on Apple's systems (public, type default), to logcat on Android
///    (tag `ZorSuite`, level info), and elsewhere to the daemon at /dev/log, as `ZorSuite[pid]`, facility
///    user, level info.
/// 2. It waits for nobody: a line is lost when the daemon is absent, does not read, or takes no datagrams.
/// 3. It keeps no descriptor and does not touch what the application has set with `openlog`.
/// 4. It writes a control character as `\x0a` and a backslash as `\\`, so that an SSID cannot forge a line,
///    and cuts lines at about 1,000 bytes. A sink of the application's own gets the text as it is.
///
/// Any thread may call it. The sink itself is called from the application's thread and from the workers,
/// several at a time, and should return soon: a sender waits for it. A line that is being written while the
/// sink is replaced may still reach the old one, which stays alive until then. What a sink throws is dropped.
/// A sink that ends a worker's thread (`pthread_exit`) ends the worker. A sink must not start a worker: the
/// start would wait for the worker that waits for the sink.
ZOR_API void ZorSetLogSink(ZorLogSink sink);

/// Writes one NUL-terminated line where the library's own lines go. Any thread.
ZOR_API void ZorLogLine(const char* line);
