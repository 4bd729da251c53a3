#include <arpa/inet.h>

#include <memory>
#include <optional>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/Output.h"
#include "cli/ProgressBar.h"

namespace zor::cli {
namespace {

constexpr int kLookMs = 20;  ///< How soon a changed status is noticed.
constexpr std::size_t kLongestUrl = kZorUpgradeUrlSize - 1;

struct UpgradeOptions : CommonOptions {
  std::string address;
  std::string url;
};

void checkArguments(const UpgradeOptions& options) {
  in_addr address{};
  if (inet_pton(AF_INET, options.address.c_str(), &address) != 1) {
    throw WrongUse("'" + printable(options.address) +
                   "' is no IPv4 address: give the module's as four numbers, as 192.168.1.20");
  }
  if (options.url.size() > kLongestUrl) {
    throw WrongUse("the URL takes " + std::to_string(options.url.size()) + " bytes: give at most " +
                   std::to_string(kLongestUrl));
  }
  if (options.url.find(',') != std::string::npos) {
    throw WrongUse("the URL holds a comma, at which the module would end it: write %2C instead");
  }
}

/// What the final `status` of an upgrade that failed means, and what to try.
std::string explain(std::int32_t status) {
  const std::string code = " (" + std::to_string(status) + ")";
  switch (status) {
    case kZorUpgradeSilence:
      return "the module gave no answer for 10 seconds" + code +
             ": check its address with 'zorctl search', and that a firewall lets answers in from UDP port "
             "25000";
    case kZorUpgradeNotHttp:
      return "the URL does not begin with http://" + code + ": modules fetch over plain HTTP alone";
    case kZorUpgradeUrlRefused:
      return "the URL was refused" + code +
             ": give http://HOST[:PORT]/PATH, with a path, a host of at most 127 "
             "characters, a port of at most 15, no ':' in the path and no control characters";
    case kZorUpgradeNoSocket:
      return "no UDP socket could be opened" + code +
             ": close other programs or raise 'ulimit -n', then try again";
    case kZorUpgradeBindFailed:
      return "the UDP socket could not be bound to a port" + code + ": check that the system has ports left";
    default:
      return "the module ended the upgrade with its own code " + std::to_string(status) +
             ": look it up in the module's manual, and check that the URL is one it can reach";
  }
}

/// The name of a phase that is not final.
const char* phaseName(std::int32_t status) {
  if (status <= kZorUpgradeCommandSent) return "command_sent";
  return status == kZorUpgradeAccepted ? "accepted" : "fetching";
}

std::string phaseText(std::int32_t status) {
  if (status <= kZorUpgradeCommandSent) return "command sent";
  return status == kZorUpgradeAccepted ? "accepted" : std::to_string(status) + " %";
}

void showPhase(Output& output, std::int32_t status) {
  output.reportJson({{"event", "phase"}, {"phase", phaseName(status)}, {"status", status}});
  if (output.isLive()) {
    output.showLive(progressBar(status <= kZorUpgradeAccepted ? 0 : status) + "  " + phaseText(status));
  } else {
    output.reportText(phaseText(status));
  }
}

/// Shows the phases until the upgrade has ended; its final status, or none when a signal came first.
std::optional<std::int32_t> follow(ZorSuite& suite, Output& output, const Interrupt& interrupt) {
  std::int32_t shown = kZorUpgradeRequested;
  while (!interrupt.wait(kLookMs)) {
    const bool ended = !s_threadUpgrade;
    const std::int32_t status = suite.DeviceUpgradeProgress();
    if (ended) return status;
    if (status != shown && status >= kZorUpgradeCommandSent && status < kZorUpgradeDone)
      showPhase(output, status);
    shown = status;
  }
  return std::nullopt;
}

int fail(Output& output, Json event, const std::string& problem) {
  event["problem"] = problem;
  output.reportJson(event);
  output.complain(problem);
  return kFailure;
}

int upgrade(const UpgradeOptions& options) {
  checkArguments(options);
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  Output output(options, interrupt);
  ZorSuite suite;
  output.report("upgrading " + options.address + " from " + printable(options.url),
                {{"event", "upgrading"}, {"address", options.address}, {"url", codePoints(options.url)}});
  suite.DeviceUpgrade(options.address, options.url);

  const std::optional<std::int32_t> status = follow(suite, output, interrupt);
  Json event = {{"event", "finished"}, {"ok", status.value_or(0) >= kZorUpgradeDone}};
  if (!status) {
    const bool accepted = suite.DeviceUpgradeProgress() >= kZorUpgradeAccepted;
    return fail(output, event,
                accepted ? "stopped watching; the module goes on with the upgrade by itself"
                         : "stopped watching; the module has not answered yet");
  }
  event["status"] = *status;
  if (*status < kZorUpgradeDone) return fail(output, event, explain(*status));
  output.report("100 %, done", event);
  return output.exitCode();
}

}  // namespace

Command addUpgrade(CLI::App& app) {
  const auto options = std::make_shared<UpgradeOptions>();
  CLI::App* const command = app.add_subcommand("upgrade", "Make a module fetch new firmware, and watch it");
  command->add_option("ADDRESS", options->address, "The module's IPv4 address")->required();
  command->add_option("URL", options->url, "Where the module fetches the firmware: http://HOST[:PORT]/PATH")
      ->required();
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl upgrade 192.168.1.20 http://192.168.1.10:8080/firmware.bin");
  return {command, [options] { return upgrade(*options); }};
}

}  // namespace zor::cli
