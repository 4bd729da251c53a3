#include <cstddef>
#include <memory>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/FailedSends.h"
#include "cli/FoundModules.h"
#include "cli/InterfaceOption.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/MainQueue.h"
#include "cli/Output.h"
#include "cli/Route.h"
#include "cli/SystemErrorText.h"

namespace zor::cli {
namespace {

constexpr int kSearchPollMs = 20;  ///< How often the end of the search is looked for.

struct SearchOptions : CommonOptions {
  std::string interface;
  int count = 20;
  int intervalMs = 100;
};

/// One line of the table: five columns, the last one not padded.
std::string row(const FoundModule& module) {
  const auto column = [](const std::string& text, std::size_t width) {
    const std::string shown = printable(text);
    const std::size_t used = columns(shown);
    return shown + std::string(used < width ? width - used : 0, ' ') + "  ";
  };
  return column(module.id, 19) + column(module.address, 15) + column(module.version, 10) +
         column(module.capabilities, 12) + printable(module.extension);
}

/// Prints a module as the next row of the table, after the table's head when it is the first.
void showRow(Output& output, const FoundModule& module, bool& first) {
  if (first) output.reportText(row({"MODULE", "ADDRESS", "VERSION", "CAPABILITIES", "EXTENSION"}));
  first = false;
  output.report(row(module), foundEvent(module));
}

/// Why the search failed; empty when it did not.
std::string problemOf(std::size_t count, bool interrupted, const ZorSearchReport& report) {
  if (interrupted) return "stopped by a signal before the search was complete";
  if (count > 0) return {};
  if (report.requestsSent == 0)
    return "no request left this computer: " + (report.socketsOpened > 0
                                                    ? explainSendError(report.error.number)
                                                    : explainSocketError(report.error.number));
  const std::int64_t refused = report.received.otherContent + report.received.empty;
  if (refused > 0)
    return "no module answered, but " + std::to_string(refused) +
           " datagrams came that hold no answer: check what sends them";
  return "no module answered " + std::to_string(report.requestsSent) +
         " requests: check that the modules are on this network, that it lets its stations reach each other, "
         "and that the firewall admits answers from UDP port 25000";
}

/// Shows what the search finds until it has ended. Returns whether a signal ended it.
bool followSearch(ZorSuite& suite, Output& output, const Interrupt& interrupt) {
  FailedSends failedRequests("a request");
  while (s_threadDeviceSearch && !interrupt.raised()) {
    runMainQueueFor(kSearchPollMs, interrupt);
    const ZorSearchReport report = suite.DeviceSearchReport();
    if (report.socketsOpened > 0) failedRequests.look(report.requestsFailed, report.error, output);
  }
  const bool interrupted = s_threadDeviceSearch && interrupt.raised();
  s_threadDeviceSearch.cancel();
  s_threadDeviceSearch.waitUntilEmpty();
  ZorRunMainQueue(0);
  return interrupted;
}

ExitCode search(const SearchOptions& options) {
  useInterface(options.interface);
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  Output output(options, interrupt);
  bool first = true;
  const auto modules =
      std::make_shared<FoundModules>([&](const FoundModule& module) { showRow(output, module, first); });
  ZorSuite suite;
  suite.setDelegate(modules);
  const Route route = findRoute(kBroadcastDestination, options.interface);
  output.report("searching; requests " + routeText(route), {{"event", "searching"},
                                                            {"count", options.count},
                                                            {"interval_ms", options.intervalMs},
                                                            {"broadcast", routeJson(route)}});

  suite.DeviceSearchSetProperty(options.intervalMs, options.count);
  suite.DeviceSearch();
  const bool interrupted = followSearch(suite, output, interrupt);
  const std::size_t count = modules->count();
  return finish(output, {.problem = problemOf(count, interrupted, suite.DeviceSearchReport()),
                         .stopped = interrupted,
                         .summary = moduleCount(count) + " answered",
                         .details = {{"modules", count}}});
}

}  // namespace

Command addSearch(CLI::App& app) {
  const auto options = std::make_shared<SearchOptions>();
  CLI::App* const command = app.add_subcommand("search", "Find the modules on the network");
  command->add_option("--count", options->count, "Requests to send")
      ->option_text("COUNT")
      ->check(CLI::Range(1, 100'000))
      ->capture_default_str();
  command->add_option("--interval", options->intervalMs, "Time between requests")
      ->option_text("MILLISECONDS")
      ->check(CLI::Range(0, 60'000))
      ->capture_default_str();
  addInterfaceOption(*command, options->interface);
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl search --count 50 --interval 200");
  return {command, [options] { return search(*options); }};
}

}  // namespace zor::cli
