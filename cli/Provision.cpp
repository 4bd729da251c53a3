#include <memory>

#include "cli/Command.h"
#include "cli/Hex.h"
#include "cli/PassPhrase.h"
#include "cli/ProvisionRun.h"

namespace zor::cli {
namespace {

constexpr int kLongestTimeoutSeconds = 2'147'483;  // As many as 32 bits hold in milliseconds.
constexpr int kMostExpected = 1024;

struct ProvisionOptions : CommonOptions {
  std::string ssid;
  std::string passPhrase;
  std::string passPhraseFile;
  std::string append;
  std::string pace;
  int timeoutSeconds = 100;
  int expected = 1;
  bool version3 = false;
  bool mixed = false;
  const CLI::Option* passPhraseOption = nullptr;
  const CLI::Option* passPhraseFileOption = nullptr;
  const CLI::Option* appendOption = nullptr;
  const CLI::Option* paceOption = nullptr;
};

SendMode modeOf(const ProvisionOptions& options) {
  if (options.version3) return SendMode::version3;
  return options.mixed ? SendMode::mixed : SendMode::version5;
}

/// All of the plan but the pass phrase, which may have to be asked for.
ProvisionPlan readPlan(const ProvisionOptions& options) {
  ProvisionPlan plan;
  plan.payload.ssid = options.ssid;
  plan.payload.append = fromHex(options.append);
  plan.appendGiven = options.appendOption->count() > 0;
  plan.mode = modeOf(options);
  plan.timeout = std::chrono::seconds(options.timeoutSeconds);
  plan.expected = static_cast<std::size_t>(options.expected);
  if (options.paceOption->count() > 0) plan.pace = readPace(options.pace);
  checkLengths(plan.payload);
  return plan;
}

std::string readPassPhrase(const ProvisionOptions& options, const Interrupt& interrupt) {
  if (options.passPhraseOption->count() > 0) return options.passPhrase;
  if (options.passPhraseFileOption->count() > 0) return readPassPhraseFile(options.passPhraseFile);
  return askPassPhrase(options.ssid, interrupt);
}

int provision(const ProvisionOptions& options) {
  ProvisionPlan plan = readPlan(options);
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  plan.payload.passPhrase = readPassPhrase(options, interrupt);
  checkLengths(plan.payload);
  Output output(options, interrupt);
  return ProvisionRun(plan, interrupt, logLines, output).run();
}

void addCredentialOptions(CLI::App& command, ProvisionOptions& options) {
  command.add_option("--ssid", options.ssid, "Name of the network, at most 32 bytes")->required();
  CLI::Option* const pass = command.add_option("--pass", options.passPhrase,
                                               "Its pass phrase, at most 64 bytes, '' for an open network; "
                                               "other users may see it in the process list");
  CLI::Option* const passFile =
      command.add_option("--pass-file", options.passPhraseFile,
                         "File that holds the pass phrase in one line; with neither "
                         "option it is asked for on the terminal");
  pass->excludes(passFile);
  options.passPhraseOption = pass;
  options.passPhraseFileOption = passFile;
}

void addSendingOptions(CLI::App& command, ProvisionOptions& options) {
  command.add_option("--timeout", options.timeoutSeconds, "Seconds after which to give up")
      ->check(CLI::Range(1, kLongestTimeoutSeconds))
      ->capture_default_str();
  CLI::Option* const append = command.add_option(
      "--append", options.append,
      "Up to 16 bytes of application data in hexadecimal, instead of the listening port's");
  CLI::Option* const version3 =
      command.add_flag("--v3", options.version3, "Send version 3 instead of version 5");
  CLI::Option* const mixed =
      command.add_flag("--mix-v3", options.mixed, "Mix version 3 frames into version 5");
  CLI::Option* const pace = command.add_option(
      "--pace", options.pace,
      "default, fast, robust, or 14 values 0..255 with commas between, or a file of them: multicast length "
      "base, milliseconds after each datagram, cycle and block, repeats of sync, data and cycles, then the "
      "same for broadcast");
  version3->excludes(mixed)->excludes(append)->excludes(pace);
  options.appendOption = append;
  options.paceOption = pace;
}

}  // namespace

Command addProvision(CLI::App& app) {
  const auto options = std::make_shared<ProvisionOptions>();
  CLI::App* const command =
      app.add_subcommand("provision", "Tell new modules the network, and wait until they join");
  addCredentialOptions(*command, *options);
  addSendingOptions(*command, *options);
  command->add_option("--expect", options->expected, "Modules after which to stop")
      ->check(CLI::Range(1, kMostExpected))
      ->capture_default_str();
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl provision --ssid Home --pass-file ~/home.txt --timeout 60");
  return {command, [options] { return provision(*options); }};
}

}  // namespace zor::cli
