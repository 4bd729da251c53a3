#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace zor::cli {

/// What the subcommands share.
struct CommonOptions {
  bool json = false;
  bool verbose = false;
};

/// A subcommand: its place on the command line, and what it does once its options are read. `run` returns an
/// `ExitCode` and may throw `WrongUse` and `RunFailure`.
struct Command {
  CLI::App* app = nullptr;
  std::function<int()> run;
};

/// Adds `--json`; `options` outlives the parsing.
void addJsonOption(CLI::App& app, CommonOptions& options);

/// Adds `--json` and `--verbose`; `options` outlives the parsing.
void addCommonOptions(CLI::App& app, CommonOptions& options);

// Each adds its subcommand to `app`.
Command addProvision(CLI::App& app);
Command addListen(CLI::App& app);
Command addModule(CLI::App& app);
Command addSearch(CLI::App& app);
Command addUpgrade(CLI::App& app);

}  // namespace zor::cli
