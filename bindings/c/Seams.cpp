#include <cstring>
#include <string>

#include "bindings/c/Support.h"

using zor::c::guarded;
using zor::c::Held;
using zor::c::hold;
using zor::c::isGiven;
using zor::c::isShared;
using zor::c::viewOf;

std::int32_t zor_set_interface(const char* name, std::size_t length) {
  if (!isGiven(name, length)) return ZOR_ERROR_NULL;
  return ZorSetInterface(viewOf(name, length)) ? ZOR_OK : ZOR_ERROR_ARGUMENT;
}

std::int32_t zor_set_socket_hook(zor_socket_hook hook, void* user, void (*destroy)(void* user)) {
  return guarded([=]() -> std::int32_t {
    const Held held = hold(user, destroy);
    if (hook == nullptr) {
      ZorSetSocketHook(nullptr);
      return ZOR_OK;
    }
    ZorSetSocketHook([hook, held](std::int32_t descriptor) { return hook(held.get(), descriptor) != 0; });
    return isShared(held) ? ZOR_OK : ZOR_ERROR_MEMORY;
  });
}

std::int32_t zor_set_log_sink(zor_log_sink sink, void* user, void (*destroy)(void* user)) {
  return guarded([=]() -> std::int32_t {
    const Held held = hold(user, destroy);
    if (sink == nullptr) {
      ZorSetLogSink(nullptr);
      return ZOR_OK;
    }
    ZorSetLogSink([sink, held](const char* line) { sink(held.get(), {line, std::strlen(line)}); });
    return isShared(held) ? ZOR_OK : ZOR_ERROR_MEMORY;
  });
}

std::int32_t zor_log_line(const char* line, std::size_t length) {
  if (!isGiven(line, length)) return ZOR_ERROR_NULL;
  return guarded([=]() -> std::int32_t {
    ZorLogLine(std::string(viewOf(line, length)).c_str());
    return ZOR_OK;
  });
}
