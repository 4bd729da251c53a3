#pragma once

#include <cstddef>

namespace zor::bench {

// Linking PaintedStacks.cpp gives every new thread of the process a stack of its own making, filled with a
// pattern, so that it shows afterwards how deep the thread has gone.

/// How many threads have been started so far.
std::size_t threadsStarted();

/// Bytes of stack that the `index`th thread has used, counted from 0 in the order of their starts. The C
/// library's own data on top of the stack are among them.
std::size_t stackUsed(std::size_t index);

}  // namespace zor::bench
