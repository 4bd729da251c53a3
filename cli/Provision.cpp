#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "cli/Command.h"
#include "cli/CredentialOptions.h"
#include "cli/Ending.h"
#include "cli/Hex.h"
#include "cli/InterfaceOption.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/Output.h"
#include "cli/Pace.h"
#include "cli/PassPhrase.h"
#include "cli/Payload.h"
#include "cli/ProvisionRun.h"

namespace zor::cli {
namespace {

constexpr int kMaxTimeoutSeconds = 2'147'483;  ///< 24 days: the library counts milliseconds in 32 bits.
constexpr int kMaxExpected = 1024;

struct ProvisionOptions : CommonOptions, CredentialOptions {
  std::optional<std::string> append;
  std::optional<std::string> pace;
  std::string module;
  std::string interface;
  int timeoutSeconds = 100;
  int lingerSeconds = 10;
  int expected = 1;
  bool version3 = false;
  bool mixed = false;
};

SendMode modeOf(const ProvisionOptions& options) {
  if (options.version3) return SendMode::version3;
  return options.mixed ? SendMode::mixed : SendMode::version5;
}

/// The plan without the pass phrase, which may have to be asked for.
ProvisionPlan readPlan(const ProvisionOptions& options) {
  ProvisionPlan plan;
  plan.payload.ssid = options.ssid;
  plan.appendGiven = options.append.has_value();
  if (options.append) plan.payload.append = fromHex(*options.append);
  plan.mode = modeOf(options);
  plan.timeout = std::chrono::seconds(options.timeoutSeconds);
  plan.linger = std::chrono::seconds(options.lingerSeconds);
  plan.module = options.module;
  plan.interface = options.interface;
  plan.expected = static_cast<std::size_t>(options.expected);
  if (options.pace) plan.pace = readPace(*options.pace);
  checkLengths(plan.payload);
  return plan;
}

ExitCode provision(const ProvisionOptions& options) {
  ProvisionPlan plan = readPlan(options);
  useInterface(plan.interface);
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  plan.payload.passPhrase = readPassPhrase(options, interrupt);
  checkLengths(plan.payload);
  Output output(options, interrupt);
  const std::string warning = passPhraseWarning(plan.payload.passPhrase);
  if (!warning.empty()) output.complain(warning);
  return finish(output, ProvisionRun(plan, interrupt, output).run());
}

void addSendingOptions(CLI::App& command, ProvisionOptions& options) {
  command.add_option("--timeout", options.timeoutSeconds, "Time after which to stop sending")
      ->option_text("SECONDS")
      ->check(CLI::Range(1, kMaxTimeoutSeconds))
      ->capture_default_str();
  addInterfaceOption(command, options.interface);
  CLI::Option* const append = addTextOption(
      command, "--append", options.append,
      "Up to 16 bytes of application data in hexadecimal, in place of the listening port", "HEX");
  CLI::Option* const version3 =
      command.add_flag("--v3", options.version3, "Send version 3 instead of version 5");
  CLI::Option* const mixed =
      command.add_flag("--mix-v3", options.mixed, "Mix version 3 frames into version 5");
  CLI::Option* const pace = addTextOption(
      command, "--pace", options.pace,
      "default, fast, robust, brief, 14 values 0..255 separated by commas, or a file that holds them: "
      "multicast length base, milliseconds after each datagram, cycle and block, repeats of sync, data and "
      "cycles, "
      "then the same for broadcast",
      "PACE");
  version3->excludes(mixed)->excludes(append)->excludes(pace);
}

void addWaitingOptions(CLI::App& command, ProvisionOptions& options) {
  CLI::Option* const expect = command
                                  .add_option("--expect", options.expected,
                                              "Stop once this many new modules have announced themselves")
                                  ->option_text("COUNT")
                                  ->check(CLI::Range(1, kMaxExpected))
                                  ->capture_default_str();
  command.add_option("--module", options.module, "Stop once the module of this id has announced itself")
      ->option_text("ID")
      ->excludes(expect);
  command.add_option("--linger", options.lingerSeconds, "Time to listen on after the time-out")
      ->option_text("SECONDS")
      ->check(CLI::Range(0, kMaxTimeoutSeconds))
      ->capture_default_str();
}

}  // namespace

Command addProvision(CLI::App& app) {
  const auto options = std::make_shared<ProvisionOptions>();
  CLI::App* const command =
      app.add_subcommand("provision", "Send a network's credentials to new modules and wait until they join");
  addCredentialOptions(*command, *options);
  addSendingOptions(*command, *options);
  addWaitingOptions(*command, *options);
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl provision --ssid Home --pass-file ~/home.txt --timeout 60");
  return {command, [options] { return provision(*options); }};
}

}  // namespace zor::cli
