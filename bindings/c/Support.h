#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string_view>
#include <utility>

#include "ZOR/ZorSuite.h"
#include "bindings/c/zorsuite.h"

/// What a `zor_suite` pointer leads to.
struct zor_suite {
  ZorSuite suite;
};

namespace zor::c {

/// The application's `user` pointer, shared by all that may still use it; the last destroys it.
using Held = std::shared_ptr<void>;

/// Takes over `user`. Without memory it throws, and `user` is destroyed.
inline Held hold(void* user, void (*destroy)(void* user)) {
  if (destroy == nullptr) return {user, [](void*) {}};
  return {user, destroy};
}

/// True if the library has taken over what was made with `held`; without memory it does not.
inline bool isShared(const Held& held) {
  return held.use_count() > 1;
}

/// Calls `function` and returns its code, or that there was no memory, the only thing that throws here. Does
/// not catch the unwinding of `pthread_exit`.
template <class Function>
std::int32_t guarded(Function&& function) {
  try {
    return std::forward<Function>(function)();
  } catch (const std::exception&) {
    return ZOR_ERROR_MEMORY;
  }
}

/// False for a null text that claims to have bytes.
template <class Byte>
bool isGiven(const Byte* bytes, std::size_t length) {
  return bytes != nullptr || length == 0;
}

/// The text of `length` bytes. The application has been asked for no more than `isGiven`.
inline std::string_view viewOf(const char* bytes, std::size_t length) {
  return bytes == nullptr ? std::string_view() : std::string_view(bytes, length);
}

/// A text of the library's that has a NUL after its last byte.
inline zor_text textOf(std::string_view text) {
  return {text.data(), text.size()};
}

}  // namespace zor::c
