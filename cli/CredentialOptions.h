#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "cli/Interrupt.h"

namespace zor::cli {

/// A network's name and pass phrase as the command line has them.
struct CredentialOptions {
  std::string ssid;
  std::optional<std::string> passPhrase;
  std::optional<std::string> passPhraseFile;
};

/// Adds `--ssid`, `--pass` and `--pass-file`; `options` outlives the parsing.
void addCredentialOptions(CLI::App& command, CredentialOptions& options);

/// The pass phrase of `--pass` or `--pass-file`, or typed on the terminal when neither was given. Blocks
/// while it is read. Throws as `askPassPhrase` and `readPassPhraseFile` do.
std::string readPassPhrase(const CredentialOptions& options, const Interrupt& interrupt);

}  // namespace zor::cli
