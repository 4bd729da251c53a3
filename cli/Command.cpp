#include "cli/Command.h"

namespace zor::cli {

CLI::Option* addTextOption(CLI::App& app, const std::string& name, std::optional<std::string>& value,
                           const std::string& description, const std::string& valueName) {
  // If the parser filled the optional itself, an empty text would leave it empty.
  const auto set = [&value](const std::string& text) { value = text; };
  return app.add_option_function<std::string>(name, set, description)->option_text(valueName);
}

void addJsonOption(CLI::App& app, CommonOptions& options) {
  app.add_flag("--json", options.json, "Print one JSON object per line");
}

void addCommonOptions(CLI::App& app, CommonOptions& options) {
  addJsonOption(app, options);
  app.add_flag("--verbose", options.verbose,
               "Print the library's log lines, without the pass phrase, on stderr");
}

}  // namespace zor::cli
