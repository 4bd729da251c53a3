#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "cli/Command.h"
#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Generate.h"
#include "cli/Help.h"
#include "cli/TextWriter.h"

namespace zor::cli {
namespace {

/// Puts /dev/null where stdin, stdout or stderr is closed: a socket that took its place would receive what is
/// printed.
void occupyStandardDescriptors() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

ExitCode complain(const char* text, ExitCode code) {
  std::fprintf(stderr, "zorctl: %s\n", text);
  return code;
}

/// Says in one line why the command line was not understood.
ExitCode complain(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<CLI::App*> named = const_cast<CLI::App&>(app).get_subcommands();
  const std::string subcommand = named.empty() ? "" : " " + named.front()->get_name();
  const bool isIncomplete = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr ||
                            dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  const std::string leftovers = isIncomplete ? explainLeftovers(app) : std::string{};
  const std::string why = leftovers.empty() ? printable(error.what()) : leftovers;
  const std::string text =
      why + (why.ends_with('?') ? " See" : "; see") + " 'zorctl" + subcommand + " --help'";
  return complain(text.c_str(), ExitCode::wrongUse);
}

ExitCode run(const std::vector<Command>& commands) {
  for (const Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  throw WrongUse("no subcommand: name one; 'zorctl --help' lists them");
}

/// The arguments in reverse order, as the parser takes them. "--name=" becomes "--name" and an empty value:
/// the parser would take the next argument for the value.
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

ExitCode printGenerated(const CLI::App& app, const std::string& kind) {
  const bool isWhole = std::fputs(generate(app, kind).c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
  return isWhole ? ExitCode::success : ExitCode::failure;
}

ExitCode parseAndRun(int argc, char** argv) {
  CLI::App app("Brings Wi-Fi modules onto a network, finds them and upgrades them.", "zorctl");
  app.formatter(std::make_shared<HelpFormatter>());
  app.set_help_flag("-h,--help", "Print this and end");
  app.set_version_flag("--version", "zorctl " ZOR_VERSION, "Print the version and end");
  app.require_subcommand(0, 1);
  app.footer(
      "Example: zorctl provision --ssid Home\n'zorctl SUBCOMMAND --help' shows the options of each."
#if !defined(ZOR_HAS_RECEIVER)
      "\nThe subcommands 'decode' and 'module' are built on Linux only."
#endif
  );
  std::string generated;
  addGenerateOption(app, generated);
  std::vector<Command> commands = {addProvision(app), addListen(app),     addSearch(app),
                                   addUpgrade(app),   addInterfaces(app), addPacket(app)};
#if defined(ZOR_HAS_RECEIVER)
  commands.push_back(addDecode(app));
  commands.push_back(addModule(app));
  commands.push_back(addSimulate(app));
#endif
  try {
    app.parse(argumentsBackwards(argc, argv));
  } catch (const CLI::ParseError& error) {
    const bool askedForText = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    if (!askedForText) return complain(app, error);
    app.exit(error);
    return ExitCode::success;
  }
  if (!generated.empty()) return printGenerated(app, generated);
  return run(commands);
}

ExitCode runSafely(int argc, char** argv) {
  try {
    return parseAndRun(argc, argv);
  } catch (const WrongUse& error) {
    return complain(error.what(), ExitCode::wrongUse);
  } catch (const Stopped& error) {
    // Nothing ends a wait for a reader of stderr any more.
    writeAtOnce(STDERR_FILENO, std::string("zorctl: ") + error.what() + "\n");
    return error.code();
  } catch (const std::exception& error) {
    return complain(error.what(), ExitCode::failure);
  }
}

}  // namespace
}  // namespace zor::cli

int main(int argc, char** argv) {
  using namespace zor::cli;
  std::signal(SIGPIPE, SIG_IGN);  // Output that nobody reads is dropped; the exit code still counts.
  occupyStandardDescriptors();
  useCharacterSet();
  return static_cast<int>(runSafely(argc, argv));
}
