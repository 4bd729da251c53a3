#pragma once

#include <cstdint>

namespace zor {

/// Does to a new socket, which is not bound yet, what `ZorSetInterface` and `ZorSetSocketHook` ask for.
/// Returns false, with `errno` set, when that cannot be done; the caller then closes the socket. Allocates
/// nothing.
bool setUpNewSocket(std::int32_t descriptor);

}  // namespace zor
