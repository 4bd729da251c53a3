#include <memory>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/ExitCode.h"
#include "cli/FoundModules.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/MainQueue.h"
#include "cli/Output.h"

namespace zor::cli {
namespace {

constexpr int kAutomaticPort = 0;
constexpr int kLastPort = 65534;
constexpr int kLookMs = 200;  ///< How soon it is noticed that nobody reads stdout any more.

struct ListenOptions : CommonOptions {
  int port = kAutomaticPort;
};

std::string noPortText(int port) {
  if (port == kAutomaticPort)
    return "no UDP port could be opened: check 'ulimit -n' and the permission to use sockets";
  return "UDP port " + std::to_string(port) +
         " could not be opened: another program may hold it, or it is below 1024; try another port or none";
}

int listen(const ListenOptions& options) {
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  Output output(options, interrupt);
  const auto modules = std::make_shared<FoundModules>(
      [&output](const FoundModule& module) { output.report(foundText(module), foundEvent(module)); });
  ZorSuite suite;
  suite.setDelegate(modules);

  const int port = suite.SmartConfigOnlineListen(options.port);
  if (port < 0) throw RunFailure(noPortText(options.port));
  output.report("listening on UDP port " + std::to_string(port) + ", Ctrl-C ends",
                {{"event", "listening"}, {"port", port}});
  while (!interrupt.raised() && !output.isGone()) runMainQueueFor(kLookMs, interrupt);

  s_threadSmartOnlineListen.cancel();
  s_threadSmartOnlineListen.waitUntilEmpty();
  ZorRunMainQueue(0);
  output.report("stopped; heard of " + moduleCount(modules->count()),
                {{"event", "finished"}, {"ok", true}, {"modules", modules->count()}});
  return output.exitCode();
}

}  // namespace

Command addListen(CLI::App& app) {
  const auto options = std::make_shared<ListenOptions>();
  CLI::App* const command =
      app.add_subcommand("listen", "Show the modules that announce themselves, until Ctrl-C");
  command
      ->add_option("--port", options->port,
                   "UDP port to listen on; without it the first free one from 25010 up")
      ->check(CLI::Range(1, kLastPort));
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl listen --port 25010 --json");
  return {command, [options] { return listen(*options); }};
}

}  // namespace zor::cli
