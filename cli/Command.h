#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "cli/ExitCode.h"

namespace zor::cli {

/// Options that several subcommands share.
struct CommonOptions {
  bool json = false;
  bool verbose = false;
};

/// A subcommand: its place on the command line, and what it does once its options have been read. `run` may
/// throw `WrongUse` and `RunFailure`.
struct Command {
  CLI::App* app = nullptr;
  std::function<ExitCode()> run;
};

/// Adds an option that takes a text, which its help calls `valueName`. `value` stays empty without the option
/// and outlives the parsing.
CLI::Option* addTextOption(CLI::App& app, const std::string& name, std::optional<std::string>& value,
                           const std::string& description, const std::string& valueName);

/// Adds `--json`; `options` outlives the parsing.
void addJsonOption(CLI::App& app, CommonOptions& options);

/// Adds `--json` and `--verbose`; `options` outlives the parsing.
void addCommonOptions(CLI::App& app, CommonOptions& options);

// Each adds its subcommand to `app`.
Command addProvision(CLI::App& app);
Command addListen(CLI::App& app);
Command addSearch(CLI::App& app);
Command addUpgrade(CLI::App& app);
Command addInterfaces(CLI::App& app);
Command addPacket(CLI::App& app);
// Only where ZOR_HAS_RECEIVER is defined, which Linux is needed for.
Command addDecode(CLI::App& app);
Command addSimulate(CLI::App& app);
Command addModule(CLI::App& app);

}  // namespace zor::cli
