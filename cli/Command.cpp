#include "cli/Command.h"

namespace zor::cli {

void addJsonOption(CLI::App& app, CommonOptions& options) {
  app.add_flag("--json", options.json, "Print one JSON object a line");
}

void addCommonOptions(CLI::App& app, CommonOptions& options) {
  addJsonOption(app, options);
  app.add_flag("--verbose", options.verbose,
               "Print the library's log lines, without the pass phrase, on stderr");
}

}  // namespace zor::cli
