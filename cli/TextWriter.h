#pragma once

#include <string_view>

namespace zor::cli {

class Interrupt;

/// Writes `text` to `descriptor`, waiting for its reader. Once `interrupt` is raised, what the reader does
/// not take within half a second is dropped. Returns 0, ETIMEDOUT when something was dropped, or the error
/// of the system.
int writeText(int descriptor, std::string_view text, const Interrupt& interrupt);

/// Writes `text`, at most PIPE_BUF bytes, if `descriptor` takes it without waiting. Returns whether it did.
/// Any thread.
bool writeAtOnce(int descriptor, std::string_view text);

}  // namespace zor::cli
