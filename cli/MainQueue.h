#pragma once

#include "cli/Interrupt.h"

namespace zor::cli {

/// Waits at most `waitMs` milliseconds for work on the main-thread queue or an interrupt, then runs the
/// queue.
void runMainQueueFor(int waitMs, const Interrupt& interrupt);

}  // namespace zor::cli
