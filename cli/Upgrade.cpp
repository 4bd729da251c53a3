#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/ClockWatch.h"
#include "cli/Command.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/FailedSends.h"
#include "cli/InterfaceOption.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/Output.h"
#include "cli/Route.h"
#include "cli/SystemErrorText.h"

namespace zor::cli {
namespace {

constexpr std::chrono::milliseconds kStatusPoll{20};  ///< How often the status is read.
constexpr std::size_t kMaxUrlLength = kZorUpgradeUrlSize - 1;

struct UpgradeOptions : CommonOptions {
  std::string address;
  std::string url;
  std::string interface;
};

/// What is known of an upgrade that has ended.
struct EndedUpgrade {
  std::int32_t status = 0;
  ZorUpgradeReport report{};
  std::chrono::seconds stoodStill{};   ///< How long the process did not run.
  std::chrono::seconds wentForward{};  ///< How far the clock went ahead.
};

/// What ended the upgrade although the module may have answered; empty when it is nothing of that kind.
std::string explainClock(const EndedUpgrade& upgrade) {
  constexpr char kRemedy[] =
      "the module may have continued; look for it with 'zorctl search', then try again";
  if (upgrade.stoodStill.count() > 0)
    return "zorctl stood still for " + std::to_string(upgrade.stoodStill.count()) +
           " s, stopped or on a computer that was asleep: " + kRemedy;
  if (upgrade.wentForward.count() > 0)
    return "this computer's clock went forward by " + std::to_string(upgrade.wentForward.count()) +
           " s, which ended the wait for an answer: " + kRemedy;
  return {};
}

/// Why the module was not heard for 10 seconds.
std::string explainSilence(const EndedUpgrade& upgrade) {
  const ZorUpgradeReport& report = upgrade.report;
  const std::string code = " (" + std::to_string(kZorUpgradeSilence) + ")";
  if (report.requestsSent == 0)
    return "no request left this computer" + code + ": " + explainSendError(report.error.number);
  if (const std::string text = explainClock(upgrade); !text.empty())
    return "the upgrade ended" + code + " because " + text;
  const std::string silence = "the module did not answer for 10 seconds" + code + ": ";
  if (report.otherPort > 0)
    return silence + "answers from another port than 25000 were refused (" +
           std::to_string(report.otherPort) + "): check that no address translation lies between";
  if (report.notAResponse > 0)
    return silence + "datagrams which are no responses were refused (" + std::to_string(report.notAResponse) +
           "): check what it is";
  return silence +
         "check its address with 'zorctl search', and that the firewall admits answers from UDP port 25000";
}

/// What the final status of a failed upgrade means and what to try.
std::string explain(const EndedUpgrade& upgrade) {
  const std::int32_t status = upgrade.status;
  const std::string code = " (" + std::to_string(status) + ")";
  switch (status) {
    case kZorUpgradeSilence:
      return explainSilence(upgrade);
    case kZorUpgradeNotHttp:
      return "the URL does not start with http://" + code + ": modules fetch over plain HTTP only";
    case kZorUpgradeUrlRefused:
      return "the URL was refused" + code +
             ": give http://HOST[:PORT]/PATH, with a path, a host of at most 127 "
             "characters, a port of at most 15, no ':' in the path and no control characters";
    case kZorUpgradeNoSocket:
      return "no UDP socket could be opened" + code + ": " + explainSocketError(upgrade.report.error.number);
    case kZorUpgradeBindFailed:
      return "the UDP socket could not be bound to a port" + code + ": check that the system has free ports";
    default:
      return "the module ended the upgrade with its own code " + std::to_string(status) +
             ": look it up in the module's manual, and check that the URL is one it can reach";
  }
}

void checkArguments(const UpgradeOptions& options) {
  if (!isIpv4Address(options.address)) {
    throw WrongUse("'" + printable(options.address) +
                   "' is not an IPv4 address: give the module's as four numbers, such as 192.168.1.20");
  }
  if (options.url.size() > kMaxUrlLength) {
    throw WrongUse("the URL takes " + std::to_string(options.url.size()) + " bytes: give at most " +
                   std::to_string(kMaxUrlLength));
  }
  if (options.url.find(',') != std::string::npos) {
    throw WrongUse("the URL holds a comma, where the module would cut it off: write %2C instead");
  }
  char commandData[kZorUpgradeCmdDataSize];
  const std::int32_t result = ZorBuildUpgradeCmdData(options.url.c_str(), commandData);
  if (result == kZorUrlNotHttp) throw WrongUse(explain({.status = kZorUpgradeNotHttp}));
  if (result < 0) throw WrongUse(explain({.status = kZorUpgradeUrlRefused}));
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
    output.showLive(phaseText(status), status <= kZorUpgradeAccepted ? 0 : status / 100.0);
  } else {
    output.reportText(phaseText(status));
  }
}

/// Waits until the next look at the status. Returns false when a signal came.
bool wait(ClockWatch& clocks, const Interrupt& interrupt) {
  const auto start = ClockWatch::Clock::now();
  if (interrupt.wait(static_cast<int>(kStatusPoll.count()))) return false;
  clocks.noteWait(ClockWatch::Clock::now() - start, kStatusPoll);
  return true;
}

/// Shows the phases until the upgrade has ended. Returns how it ended, or nothing when a signal came first.
std::optional<EndedUpgrade> followUpgrade(ZorSuite& suite, Output& output, const Interrupt& interrupt) {
  std::int32_t shown = kZorUpgradeRequested;
  FailedSends failedRequests("a request");
  ClockWatch clocks;
  while (wait(clocks, interrupt)) {
    const bool ended = !s_threadUpgrade;
    const std::int32_t status = suite.DeviceUpgradeProgress();
    const ZorUpgradeReport report = suite.DeviceUpgradeReport();
    if (report.socketsOpened > 0) failedRequests.look(report.requestsFailed, report.error, output);
    if (ended) return EndedUpgrade{status, report, clocks.stoodStill(), clocks.wentForward()};
    if (status != shown && status >= kZorUpgradeCommandSent && status < kZorUpgradeDone)
      showPhase(output, status);
    shown = status;
  }
  return std::nullopt;
}

/// The ending of an upgrade that was watched to its final status.
Ending endingOf(const EndedUpgrade& upgrade) {
  Ending ending;
  ending.details = {{"status", upgrade.status}};
  if (upgrade.status < kZorUpgradeDone) {
    ending.problem = explain(upgrade);
  } else {
    ending.summary = "100 %, done";
  }
  return ending;
}

/// The ending of an upgrade whose status was `status` when a signal came.
Ending endingWhenLeft(std::int32_t status) {
  Ending ending;
  ending.stopped = true;
  ending.problem = status >= kZorUpgradeAccepted
                       ? "stopped watching; the module continues the upgrade on its own"
                       : "stopped watching; the module has not answered yet";
  return ending;
}

ExitCode upgrade(const UpgradeOptions& options) {
  checkArguments(options);
  useInterface(options.interface);
  const LogLines logLines(options.verbose);
  const Interrupt interrupt;
  Output output(options, interrupt);
  ZorSuite suite;
  const Route route = findRoute(options.address, options.interface);
  output.report(
      "upgrading " + options.address + " from " + printable(options.url) + "; requests " + routeText(route),
      {{"event", "upgrading"},
       {"address", options.address},
       {"url", jsonText(options.url)},
       {"route", routeJson(route)}});
  suite.DeviceUpgrade(options.address, options.url);

  const std::optional<EndedUpgrade> ended = followUpgrade(suite, output, interrupt);
  return finish(output, ended ? endingOf(*ended) : endingWhenLeft(suite.DeviceUpgradeProgress()));
}

}  // namespace

Command addUpgrade(CLI::App& app) {
  const auto options = std::make_shared<UpgradeOptions>();
  CLI::App* const command = app.add_subcommand("upgrade", "Make a module fetch new firmware, and watch it");
  command->add_option("ADDRESS", options->address, "The module's IPv4 address")->required();
  command->add_option("URL", options->url, "Where the module fetches the firmware: http://HOST[:PORT]/PATH")
      ->required();
  addInterfaceOption(*command, options->interface);
  addCommonOptions(*command, *options);
  command->footer("Example: zorctl upgrade 192.168.1.20 http://192.168.1.10:8080/firmware.bin");
  return {command, [options] { return upgrade(*options); }};
}

}  // namespace zor::cli
