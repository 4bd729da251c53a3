#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

/// Puts /dev/null where stdin, stdout or stderr was closed: a socket that took the place would get what is
/// printed.
void occupyStandardDescriptors() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

int complain(const char* text, ExitCode code) {
  std::fprintf(stderr, "zorctl: %s\n", text);
  return code;
}

/// Says in one line why the command line was not understood.
int complain(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<CLI::App*> named = const_cast<CLI::App&>(app).get_subcommands();
  const std::string subcommand = named.empty() ? "" : " " + named.front()->get_name();
  const std::string text =
      printable(error.what()) + "; 'zorctl" + subcommand + " --help' shows how it is used";
  return complain(text.c_str(), kWrongUse);
}

int run(const std::vector<Command>& commands) {
  for (const Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  throw WrongUse("no subcommand: name one; 'zorctl --help' lists them");
}

/// The arguments last to first, as the parser takes them. "--name=" becomes "--name" and an empty value: the
/// parser would take the argument that follows for the value.
std::vector<std::string> argumentsBackwards(int argc, char** argv) {
  std::vector<std::string> arguments;
  for (int i = argc - 1; i > 0; --i) {
    std::string argument = argv[i];
    const bool emptyValue = argument.starts_with("--") && argument.find('=') == argument.size() - 1;
    if (emptyValue) {
      arguments.emplace_back();
      argument.pop_back();
    }
    arguments.push_back(std::move(argument));
  }
  return arguments;
}

int parseAndRun(int argc, char** argv) {
  CLI::App app("Brings Wi-Fi modules onto a network, finds them and upgrades them.", "zorctl");
  app.set_version_flag("--version", "zorctl " ZOR_VERSION);
  app.require_subcommand(0, 1);
  app.footer("Example: zorctl provision --ssid Home\n'zorctl SUBCOMMAND --help' shows the options of each.");
  const std::vector<Command> commands = {addProvision(app), addListen(app), addModule(app), addSearch(app),
                                         addUpgrade(app)};
  try {
    app.parse(argumentsBackwards(argc, argv));
  } catch (const CLI::ParseError& error) {
    const bool askedForText = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    return askedForText ? app.exit(error) : complain(app, error);
  }
  return run(commands);
}

}  // namespace
}  // namespace zor::cli

int main(int argc, char** argv) {
  using namespace zor::cli;
  std::signal(SIGPIPE, SIG_IGN);  // What nobody reads is dropped; the exit code still tells.
  occupyStandardDescriptors();
  try {
    return parseAndRun(argc, argv);
  } catch (const WrongUse& error) {
    return complain(error.what(), kWrongUse);
  } catch (const std::exception& error) {
    return complain(error.what(), kFailure);
  }
}
