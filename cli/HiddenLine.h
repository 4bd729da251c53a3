#pragma once

#include <string>

#include "cli/Interrupt.h"

namespace zor::cli {

/// Shows `prompt`, escaped already, on stderr and reads a line from the terminal on stdin, which does not
/// show what is typed. While the process is suspended the terminal is as it was before; a process that is
/// continued shows the prompt again. Returns the line without its end; throws `WrongUse` when stdin ends and
/// `Stopped` on an interrupt.
std::string askHidden(const std::string& prompt, const Interrupt& interrupt);

}  // namespace zor::cli
