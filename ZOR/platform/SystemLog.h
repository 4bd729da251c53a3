#pragma once

namespace zor {

/// Writes one NUL-terminated line to the system's log: what `ZorSetLogSink` describes as the default. Waits
/// for nobody, keeps no descriptor, and leaves the process's own `openlog` settings alone. Any thread.
void writeToSystemLog(const char* line);

}  // namespace zor
