#pragma once

#include <string>
#include <string_view>

#include "cli/Interrupt.h"

namespace zor::cli {

/// Asks for the pass phrase of the network `ssid` on the terminal, which does not show what is typed. Blocks
/// until a line is there. Throws `WrongUse` when stdin is no terminal or ends, `RunFailure` on an interrupt.
std::string askPassPhrase(std::string_view ssid, const Interrupt& interrupt);

/// The pass phrase in the first line of the file `name`, without its line end. Throws `WrongUse` when the
/// file cannot be read, when it holds nothing, more than one line, or a NUL.
std::string readPassPhraseFile(const std::string& name);

}  // namespace zor::cli
