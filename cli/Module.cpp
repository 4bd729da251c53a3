#include <algorithm>
#include <cstddef>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "cli/Command.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/Interrupt.h"
#include "cli/ModuleView.h"
#include "cli/Output.h"
#include "cli/PassPhrase.h"
#include "receiver/module/VirtualModule.h"

namespace zor::cli {
namespace {

using receiver::Misbehaviour;

const std::map<std::string, Misbehaviour> kMisbehaviours = {
    {"none", Misbehaviour::none},
    {"silent", Misbehaviour::silent},
    {"slow-answers", Misbehaviour::slowAnswers},
    {"other-port", Misbehaviour::otherPort},
    {"late-command-answer", Misbehaviour::lateCommandAnswer},
    {"negative-status", Misbehaviour::negativeStatus},
    {"garbage-lines", Misbehaviour::garbageLines},
    {"capitals", Misbehaviour::capitals},
};

struct ModuleOptions : CommonOptions {
  receiver::VirtualModuleOptions module;
  std::optional<std::string> passPhraseFile;
  std::string misbehaviour = "none";
  bool showSecrets = false;
};

/// Accepts what a module's line can carry: printable ASCII, without commas if `noCommas`.
CLI::Validator lineText(bool noCommas) {
  const auto check = [noCommas](std::string& text) -> std::string {
    const bool fits = std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
    if (fits && (!noCommas || text.find(',') == std::string::npos)) return {};
    return "'" + text + "' must be printable ASCII" + (noCommas ? " without commas" : "");
  };
  return CLI::Validator(check, "");
}

receiver::VirtualModuleOptions moduleOptions(const ModuleOptions& options, const Interrupt& interrupt) {
  receiver::VirtualModuleOptions module = options.module;
  if (options.passPhraseFile)
    module.acceptedPassPhrase = readPassPhraseFile(*options.passPhraseFile, interrupt);
  module.misbehaviour = kMisbehaviours.at(options.misbehaviour);
  return module;
}

/// Stops `module` once `interrupt` is raised or the reader of stdout has closed it, or when this is
/// destroyed.
class Stopper {
 public:
  Stopper(receiver::VirtualModule& module, const Interrupt& interrupt, const Output& output)
      : interrupt_(interrupt), thread_([&module, &output] {
          output.waitWhileUseful();
          module.stop();
        }) {}
  ~Stopper() {
    interrupt_.raise();
    thread_.join();
  }
  Stopper(const Stopper&) = delete;
  Stopper& operator=(const Stopper&) = delete;

 private:
  const Interrupt& interrupt_;
  std::thread thread_;
};

/// Runs `module` until it is stopped. Returns why it ended earlier, escaped; empty when it did not.
std::string runUntil(const Interrupt& interrupt, const Output& output, receiver::VirtualModule& module) {
  try {
    const Stopper stopper(module, interrupt, output);
    return printable(module.run());
  } catch (const std::exception& error) {
    return printable(error.what());
  }
}

ExitCode runModule(const ModuleOptions& options) {
  const Interrupt interrupt;
  Output output(options, interrupt);
  ModuleView view(options.module.interface, options.showSecrets, output);
  receiver::VirtualModule module(moduleOptions(options, interrupt), [&](const receiver::ModuleEvent& event) {
    view.show(event);
    if (output.isGone()) interrupt.raise();
  });
  Ending ending;
  ending.problem = runUntil(interrupt, output, module);
  view.sumUpRequests();
  if (ending.problem.empty()) ending.summary = "module stopped";
  return finish(output, ending);
}

void addIdentityOptions(CLI::App& command, receiver::VirtualModuleOptions& module) {
  command.add_option("--mac", module.mac, "Its mac key; without it the interface's own address")
      ->option_text("TEXT")
      ->check(lineText(true));
  command.add_option("--version", module.version, "Its ver key")
      ->option_text("TEXT")
      ->check(lineText(true))
      ->capture_default_str();
  command.add_option("--capabilities", module.capabilities, "Its cap key")
      ->option_text("TEXT")
      ->check(lineText(true))
      ->capture_default_str();
  command.add_option("--extension", module.extension, "Further key=value pairs")
      ->option_text("TEXT")
      ->check(lineText(false))
      ->capture_default_str();
}

}  // namespace

Command addModule(CLI::App& app) {
  const auto options = std::make_shared<ModuleOptions>();
  CLI::App* const command =
      app.add_subcommand("module", "Act as a module in software, until Ctrl-C (Linux only)");
  command->add_option("--interface", options->module.interface, "Network interface whose frames it receives")
      ->option_text("INTERFACE")
      ->required();
  addTextOption(*command, "--ssid", options->module.acceptedSsid, "The only network it joins; without it any",
                "SSID");
  addTextOption(*command, "--pass", options->module.acceptedPassPhrase,
                "The only pass phrase it takes; without it any", "TEXT")
      ->excludes(addTextOption(*command, "--pass-file", options->passPhraseFile,
                               "File that holds that pass phrase in one line, - for standard input", "FILE"));
  addIdentityOptions(*command, options->module);
  command->add_flag("--provisioned", options->module.provisioned, "On the network from the start");
  command
      ->add_option("--download", options->module.downloadPath,
                   "File that an upgrade is written to; without it the bytes are dropped")
      ->option_text("FILE");
  command
      ->add_option(
          "--misbehave", options->misbehaviour,
          "What it does wrong, to test its peers: silent, slow-answers, other-port, late-command-answer, "
          "negative-status, garbage-lines, capitals")
      ->option_text("NAME")
      ->check(CLI::IsMember(kMisbehaviours))
      ->capture_default_str();
  command->add_flag("--show-secrets", options->showSecrets, "Show the pass phrases that it decodes");
  addJsonOption(*command, *options);
  command->footer("Example: zorctl module --interface wlan0 --ssid Home --download firmware.bin");
  return {command, [options] { return runModule(*options); }};
}

}  // namespace zor::cli
