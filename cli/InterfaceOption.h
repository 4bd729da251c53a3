#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zor::cli {

/// Adds `--interface`, whose value goes to `useInterface`. `interface` stays empty
/// without the option and outlives the parsing.
void addInterfaceOption(CLI::App& app, std::string& interface);

/// Makes the library use `interface`, or with an empty name what the system chooses. Throws `WrongUse` when
/// there is no such interface.
void useInterface(const std::string& interface);

}  // namespace zor::cli
