#include "cli/CredentialOptions.h"

#include "cli/Command.h"
#include "cli/PassPhrase.h"

namespace zor::cli {

void addCredentialOptions(CLI::App& command, CredentialOptions& options) {
  command.add_option("--ssid", options.ssid, "Name of the network, at most 32 bytes")
      ->option_text("SSID")
      ->required();
  CLI::Option* const pass = addTextOption(command, "--pass", options.passPhrase,
                                          "Its pass phrase, at most 64 bytes, '' for an open network; "
                                          "other users may see it in the process list",
                                          "TEXT");
  CLI::Option* const passFile = addTextOption(command, "--pass-file", options.passPhraseFile,
                                              "File that holds the pass phrase in one line, - for standard "
                                              "input; with neither option it is asked for on the terminal",
                                              "FILE");
  pass->excludes(passFile);
}

std::string readPassPhrase(const CredentialOptions& options, const Interrupt& interrupt) {
  if (options.passPhrase) return *options.passPhrase;
  if (options.passPhraseFile) return readPassPhraseFile(*options.passPhraseFile, interrupt);
  return askPassPhrase(options.ssid, interrupt);
}

}  // namespace zor::cli
