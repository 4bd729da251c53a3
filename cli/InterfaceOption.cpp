#include "cli/InterfaceOption.h"

#include "ZOR/ZorSuite.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {

void addInterfaceOption(CLI::App& app, std::string& interface) {
  app.add_option("--interface", interface,
                 "Network interface to use; without it the one that the system chooses, which 'zorctl "
                 "interfaces' shows")
      ->option_text("NAME");
}

void useInterface(const std::string& interface) {
  if (ZorSetInterface(interface)) return;
  throw WrongUse("there is no network interface '" + printable(interface) +
                 "': 'zorctl interfaces' lists those there are");
}

}  // namespace zor::cli
