#pragma once

#include <cstdint>

#include "ZOR/platform/Export.h"

/// \file
/// Scanners over one module line: `length` bytes, of which a NUL after them is not a part. None of them
/// bounds its output: every output buffer holds at least `length` + 1 bytes. Any thread; none blocks.

/// Copies the field that begins at `start` and ends at the next ':' or the line's end into `out`,
/// NUL-terminated. Returns the index after the ':', or `length`. `start` is 0..`length`.
ZOR_API std::int32_t GetValue(const void* line, std::int32_t length, std::int32_t start, char* out);

/// Splits the pair that starts at `start` and ends at the next ',' after an '=', or at the line's
/// end, into `key` and `value`, both NUL-terminated. The key runs to the pair's last '=', so
/// "a=b=c" gives "a=b" and "c"; a ',' before any '=' belongs to the key. Without an '=' both are
/// empty and a NUL is stored at `value[length]`. Returns the index after the ',', or `length`.
ZOR_API std::int32_t GetKeyValue(const void* line, std::int32_t length, std::int32_t start, char* key,
                                 char* value);

/// Replaces TAB, LF, CR and space at the end of the NUL-terminated `text` by NULs, in place.
ZOR_API void ZorTrim(char* text);
