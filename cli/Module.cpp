#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <thread>

#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Interrupt.h"
#include "cli/ModuleView.h"
#include "cli/Output.h"
#include "receiver/VirtualModule.h"

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
  std::string ssid;
  std::string passPhrase;
  std::string misbehaviour = "none";
  const CLI::Option* ssidOption = nullptr;
  const CLI::Option* passPhraseOption = nullptr;
};

/// Takes what can stand in a module's line: printable ASCII, without the separator where `separates`.
CLI::Validator lineText(bool separates) {
  const auto check = [separates](std::string& text) -> std::string {
    const bool fits =
        printable(text).size() == text.size() + static_cast<std::size_t>(std::ranges::count(text, '\\'));
    if (fits && (!separates || text.find(',') == std::string::npos)) return {};
    return "'" + text + "' must be printable ASCII" + (separates ? " without commas" : "");
  };
  return CLI::Validator(check, "");
}

receiver::VirtualModuleOptions moduleOptions(const ModuleOptions& options) {
  receiver::VirtualModuleOptions module = options.module;
  if (options.ssidOption->count() > 0) module.acceptedSsid = options.ssid;
  if (options.passPhraseOption->count() > 0) module.acceptedPassPhrase = options.passPhrase;
  module.misbehaviour = kMisbehaviours.at(options.misbehaviour);
  return module;
}

/// Stops `module` once `interrupt` is raised, at the latest when this is destroyed.
class Stopper {
 public:
  Stopper(receiver::VirtualModule& module, const Interrupt& interrupt)
      : interrupt_(interrupt), thread_([&module, &interrupt] {
          interrupt.wait(-1);
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

/// Lets `module` live until the interrupt. Returns why it died before, escaped; empty when it did not.
std::string live(receiver::VirtualModule& module, const Interrupt& interrupt) {
  try {
    const Stopper stopper(module, interrupt);
    return printable(module.run());
  } catch (const std::exception& error) {
    return printable(error.what());
  }
}

int runModule(const ModuleOptions& options) {
  const Interrupt interrupt;
  Output output(options, interrupt);
  ModuleView view(options.module.interface, output);
  receiver::VirtualModule module(moduleOptions(options), [&](const receiver::ModuleEvent& event) {
    view.show(event);
    if (output.isGone()) interrupt.raise();
  });
  const std::string problem = live(module, interrupt);
  if (!problem.empty()) {
    output.reportJson({{"event", "finished"}, {"ok", false}, {"problem", problem}});
    throw RunFailure(problem);
  }
  output.report("module stopped", {{"event", "finished"}, {"ok", true}});
  return output.exitCode();
}

void addIdentityOptions(CLI::App& command, receiver::VirtualModuleOptions& module) {
  command.add_option("--mac", module.mac, "Its mac key; without it the interface's own address")
      ->check(lineText(true));
  command.add_option("--version", module.version, "Its ver key")
      ->check(lineText(true))
      ->capture_default_str();
  command.add_option("--capabilities", module.capabilities, "Its cap key")
      ->check(lineText(true))
      ->capture_default_str();
  command.add_option("--extension", module.extension, "Further key=value pairs")
      ->check(lineText(false))
      ->capture_default_str();
}

}  // namespace

Command addModule(CLI::App& app) {
  const auto options = std::make_shared<ModuleOptions>();
  CLI::App* const command = app.add_subcommand("module", "Be a module in software, until Ctrl-C");
  command->add_option("--interface", options->module.interface, "Network interface whose frames it hears")
      ->required();
  options->ssidOption =
      command->add_option("--ssid", options->ssid, "The only network it joins; without it any");
  options->passPhraseOption =
      command->add_option("--pass", options->passPhrase, "The only pass phrase it takes; without it any");
  addIdentityOptions(*command, options->module);
  command->add_flag("--provisioned", options->module.provisioned, "On the network from the start");
  command->add_option("--download", options->module.downloadPath, "Where the file of an upgrade goes");
  command->add_option("--misbehave", options->misbehaviour, "What it does wrong, for tests of the other side")
      ->check(CLI::IsMember(kMisbehaviours))
      ->capture_default_str();
  addJsonOption(*command, *options);
  command->footer("Example: zorctl module --interface wlan0 --ssid Home --download firmware.bin");
  return {command, [options] { return runModule(*options); }};
}

}  // namespace zor::cli
