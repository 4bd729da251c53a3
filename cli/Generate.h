#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "cli/Outline.h"

namespace zor::cli {

// Texts that are installed with the tool, each made of its command line.
std::string manualPage(const CommandOutline& tool);      ///< For man, in roff.
std::string bashCompletion(const CommandOutline& tool);  ///< For bash, as a script that it reads.
std::string zshCompletion(const CommandOutline& tool);   ///< For zsh, as the function `_zorctl`.
std::string fishCompletion(const CommandOutline& tool);  ///< For fish, as a script that it reads.

/// A command, for all these shells, that prints the names of the network interfaces, one a line.
inline constexpr char kListInterfaces[] =
    "zorctl interfaces --json 2>/dev/null | "
    R"sh(sed -n 's/^{"event":"interface","interface":"\([^"]*\)".*/\1/p' | sort -u)sh";

/// Adds the hidden option `--generate`, whose value, man, bash, zsh or fish, is left in `kind`. `kind`
/// outlives the parsing.
void addGenerateOption(CLI::App& app, std::string& kind);

/// The text of `kind`, which the option has checked.
std::string generate(const CLI::App& app, const std::string& kind);

}  // namespace zor::cli
