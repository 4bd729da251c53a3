#pragma once

#include <string>
#include <string_view>

#include "cli/Interrupt.h"

namespace zor::cli {

/// Asks for the pass phrase of the network `ssid` on the terminal, which does not show what is typed. Blocks
/// until a line was typed. Throws `WrongUse` when stdin is not a terminal or ends, `Stopped` on an interrupt.
std::string askPassPhrase(std::string_view ssid, const Interrupt& interrupt);

/// The pass phrase in the first line of the file `name`, or of stdin if it is "-", without its line end. A
/// terminal does not show what is typed. Blocks until the file, which may be a pipe, has ended. Throws
/// `WrongUse` when it cannot be read, when it holds nothing, more than one line, or a NUL, and `Stopped` on
/// an interrupt.
std::string readPassPhraseFile(const std::string& name, const Interrupt& interrupt);

/// Why no WPA network can have this pass phrase, in one line; empty when one can, or when it is empty.
std::string passPhraseWarning(std::string_view passPhrase);

}  // namespace zor::cli
