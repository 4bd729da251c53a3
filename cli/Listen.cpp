#include <memory>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/FoundModules.h"
#include "cli/InterfaceOption.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/MainQueue.h"
#include "cli/Output.h"
#include "cli/SystemErrorText.h"

namespace zor::cli {
namespace {

constexpr int kAutomaticListenPort = 0;
constexpr int kLastPort = 65534;
constexpr int kOutputPollMs = 200;  ///< How often a closed stdout is looked for.

struct ListenOptions : CommonOptions {
  std::string interface;
  int port = kAutomaticListenPort;
};

/// Why the listener did not start; `error` is the system's.
std::string noPortText(int port, int error) {
  if (port == kAutomaticListenPort) return "no UDP port could be opened: " + explainSocketError(error);
  return "UDP port " + std::to_string(port) + " could not be opened: " + explainPortError(error);
}

ExitCode listen(const ListenOptions& options) {
  useInterface(options.interface);
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  Output output(options, interrupt);
  const auto modules = std::make_shared<FoundModules>(
      [&output](const FoundModule& module) { output.report(foundText(module), foundEvent(module)); });
  ZorSuite suite;
  suite.setDelegate(modules);

  const int port = suite.SmartConfigOnlineListen(options.port);
  if (port < 0) throw RunFailure(noPortText(options.port, suite.SmartConfigReport().listener.error.number));
  const std::string& interface = options.interface;
  output.report("listening on UDP port " + std::to_string(port) + " of " +
                    (interface.empty() ? "every interface" : printable(interface)) + ", Ctrl-C ends",
                {{"event", "listening"},
                 {"port", port},
                 {"interface", interface.empty() ? Json() : jsonText(interface)}});
  while (!interrupt.raised() && !output.isGone()) runMainQueueFor(kOutputPollMs, interrupt);

  s_threadSmartOnlineListen.cancel();
  s_threadSmartOnlineListen.waitUntilEmpty();
  ZorRunMainQueue(0);
  return finish(output, {.problem = "",
                         .stopped = false,
                         .summary = "stopped; " + moduleCount(modules->count()) + " heard",
                         .details = {{"modules", modules->count()}}});
}

}  // namespace

Command addListen(CLI::App& app) {
  const auto options = std::make_shared<ListenOptions>();
  CLI::App* const command =
      app.add_subcommand("listen", "Show the modules that announce themselves, until Ctrl-C");
  command
      ->add_option("--port", options->port,
                   "UDP port to listen on; without it the first free one from 25010 up")
      ->option_text("PORT")
      ->check(CLI::Range(1, kLastPort));
  addInterfaceOption(*command, options->interface);
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl listen --port 25010 --json");
  return {command, [options] { return listen(*options); }};
}

}  // namespace zor::cli
