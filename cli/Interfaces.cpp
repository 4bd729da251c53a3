#include <memory>
#include <string>

#include "cli/Command.h"
#include "cli/Ending.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Interrupt.h"
#include "cli/NetworkInterfaces.h"
#include "cli/Output.h"
#include "cli/Route.h"

namespace zor::cli {
namespace {

struct InterfacesOptions : CommonOptions {
  std::string address;  ///< Empty: none is asked about.
};

std::string row(const std::string& name, const std::string& address, const std::string& state) {
  const auto column = [](std::string text) {
    constexpr std::size_t kWidth = 15;
    if (text.size() < kWidth) text.resize(kWidth, ' ');
    return text + "  ";
  };
  return column(name) + column(address) + state;
}

void showInterfaces(Output& output) {
  output.reportText(row("INTERFACE", "ADDRESS", "STATE"));
  for (const NetworkInterface& found : networkInterfaces()) {
    output.report(row(printable(found.name), found.address.empty() ? "-" : found.address, found.state),
                  {{"event", "interface"},
                   {"interface", jsonText(found.name)},
                   {"address", found.address},
                   {"state", found.state}});
  }
}

/// Shows which interface the system chooses for `destination`; `what` names it.
void showChoice(Output& output, const std::string& what, const std::string& destination) {
  const Route route = findRoute(destination, "");
  Json event = {{"event", "route"}, {"destination", destination}};
  event.update(routeJson(route));
  output.report(what + " " + routeText(route), event);
}

void checkAddress(const std::string& address) {
  if (address.empty() || isIpv4Address(address)) return;
  throw WrongUse("'" + printable(address) +
                 "' is not an IPv4 address: give four numbers, such as 192.168.1.20");
}

ExitCode showAll(const InterfacesOptions& options) {
  checkAddress(options.address);
  const Interrupt interrupt;
  Output output(options, interrupt);
  showInterfaces(output);
  showChoice(output, "multicasts", kMulticastDestination);
  showChoice(output, "broadcasts", kBroadcastDestination);
  if (!options.address.empty()) showChoice(output, "datagrams to " + options.address, options.address);
  return finish(output, {});
}

}  // namespace

Command addInterfaces(CLI::App& app) {
  const auto options = std::make_shared<InterfacesOptions>();
  CLI::App* const command =
      app.add_subcommand("interfaces", "List the network interfaces, and which of them the system chooses");
  command->add_option("ADDRESS", options->address, "An IPv4 address to say the interface for as well");
  addJsonOption(*command, *options);
  command->footer("Example: zorctl interfaces 192.168.1.20");
  return {command, [options] { return showAll(*options); }};
}

}  // namespace zor::cli
