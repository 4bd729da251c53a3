// Stands in for the header of Apple's SDK, which the cross compiler lacks: what the library uses of it, with
// the names that libSystem exports. Only for builds by cmake/toolchains/zig.cmake.
#pragma once

#include <cstdint>

extern "C" {
struct os_log_s;
extern os_log_s _os_log_default;
extern char __dso_handle;
void _os_log_impl(void* image, os_log_s* log, std::uint8_t type, const char* format, std::uint8_t* buffer,
                  std::uint32_t size);
}

#define OS_LOG_DEFAULT (&_os_log_default)

#define os_log(log, format, text)                                                       \
  do {                                                                                  \
    alignas(16) std::uint8_t buffer[__builtin_os_log_format_buffer_size(format, text)]; \
    __builtin_os_log_format(buffer, format, text);                                      \
    _os_log_impl(&__dso_handle, log, 0, format, buffer, std::uint32_t{sizeof buffer});  \
  } while (false)
