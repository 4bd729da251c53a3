#include <memory>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/FoundModules.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/MainQueue.h"
#include "cli/Output.h"

namespace zor::cli {
namespace {

constexpr int kLookMs = 20;  ///< How soon the end of the search is noticed.

struct SearchOptions : CommonOptions {
  int count = 20;
  int intervalMs = 100;
};

/// One line of the table: five columns, the last as long as it is.
std::string row(const FoundModule& module) {
  const auto column = [](const std::string& text, std::size_t width) {
    const std::string shown = printable(text);
    return shown + std::string(shown.size() < width ? width - shown.size() : 0, ' ') + "  ";
  };
  return column(module.id, 19) + column(module.address, 15) + column(module.version, 10) +
         column(module.capabilities, 12) + printable(module.extension);
}

/// Prints a module below the ones before; the head of the table comes with the first.
void showRow(Output& output, const FoundModule& module, bool& first) {
  if (first) output.reportText(row({"MODULE", "ADDRESS", "VERSION", "CAPABILITIES", "EXTENSION"}));
  first = false;
  output.report(row(module), foundEvent(module));
}

int tellEnd(Output& output, std::size_t count, bool interrupted, const LogLines& logLines) {
  std::string problem;
  if (interrupted) {
    problem = "stopped by a signal before the search was through";
  } else if (count == 0) {
    problem =
        "no module answered: check that the modules are on this network, that it lets its stations reach "
        "each other, and that a firewall lets answers in from UDP port 25000" +
        logLines.failedSends();
  }
  Json event = {{"event", "finished"}, {"ok", problem.empty()}, {"modules", count}};
  if (!problem.empty()) event["problem"] = problem;
  output.report(moduleCount(count) + " answered", event);
  if (problem.empty()) return output.exitCode();
  output.complain(problem);
  return kFailure;
}

int search(const SearchOptions& options) {
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  Output output(options, interrupt);
  bool first = true;
  const auto modules =
      std::make_shared<FoundModules>([&](const FoundModule& module) { showRow(output, module, first); });
  ZorSuite suite;
  suite.setDelegate(modules);
  output.reportJson({{"event", "searching"}, {"count", options.count}, {"interval_ms", options.intervalMs}});

  suite.DeviceSearchSetProperty(options.intervalMs, options.count);
  suite.DeviceSearch();
  while (s_threadDeviceSearch && !interrupt.raised()) runMainQueueFor(kLookMs, interrupt);
  const bool interrupted = s_threadDeviceSearch && interrupt.raised();
  s_threadDeviceSearch.cancel();
  s_threadDeviceSearch.waitUntilEmpty();
  ZorRunMainQueue(0);
  return tellEnd(output, modules->count(), interrupted, logLines);
}

}  // namespace

Command addSearch(CLI::App& app) {
  const auto options = std::make_shared<SearchOptions>();
  CLI::App* const command = app.add_subcommand("search", "Ask which modules are on the network");
  command->add_option("--count", options->count, "Requests to send")
      ->check(CLI::Range(1, 100'000))
      ->capture_default_str();
  command->add_option("--interval", options->intervalMs, "Milliseconds between requests")
      ->check(CLI::Range(0, 60'000))
      ->capture_default_str();
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl search --count 50 --interval 200");
  return {command, [options] { return search(*options); }};
}

}  // namespace zor::cli
