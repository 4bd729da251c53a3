#pragma once

#include <chrono>

#include "cli/Interrupt.h"

namespace zor::cli {

/// Waits up to `waitMs` milliseconds for work on the main-thread queue or an interrupt, then runs the queue.
/// Returns how long the wait took: much longer than asked for when the process was stopped meanwhile.
std::chrono::steady_clock::duration runMainQueueFor(int waitMs, const Interrupt& interrupt);

}  // namespace zor::cli
