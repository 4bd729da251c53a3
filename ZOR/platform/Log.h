#pragma once

namespace zor {

/// Writes one printf-style line to the log sink, cut at 255 bytes. Takes only %d and %s, so the
/// process's locale plays no part. Any thread.
__attribute__((format(printf, 1, 2))) void log(const char* format, ...);

}  // namespace zor
