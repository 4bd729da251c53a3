#pragma once

#include <cstddef>

namespace zor::bench {

// Linking PaintedStacks.cpp gives every new thread of the process a stack that is filled with a pattern,
// which shows afterwards how much of it the thread has used.

/// Returns how many threads have been started so far.
std::size_t threadsStarted();

/// Returns the bytes of stack that thread `index` has used, counted from 0 in the order of their starts. They
/// include the C library's own data on top of the stack.
std::size_t stackUsed(std::size_t index);

}  // namespace zor::bench
