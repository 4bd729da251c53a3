#include "cli/Outline.h"

#include <algorithm>
#include <sstream>

#include "ZOR/ZorSuite.h"
#include "cli/Help.h"

namespace zor::cli {
namespace {

std::vector<std::string> dashedNames(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

/// The words that a check admits, which the parser shows as "TEXT:{one,other}".
std::vector<std::string> admittedWords(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t begin = type.find('{');
  const std::size_t end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  std::istringstream list(type.substr(begin + 1, end - begin - 1));
  std::vector<std::string> words;
  for (std::string word; std::getline(list, word, ',');) words.push_back(word);
  return words;
}

OptionOutline outlineOfOption(const CLI::Option& option) {
  OptionOutline outline;
  outline.names = dashedNames(option);
  outline.value = option.get_option_text();
  outline.description = describe(option);
  outline.words = admittedWords(option);
  if (outline.value == "PACE") {
    for (const ZorPace& pace : kZorPaces) outline.words.emplace_back(pace.name);
  }
  if (outline.value == "PACE" || outline.value == "FILE") outline.completion = Completion::files;
  if (option.check_lname("interface")) outline.completion = Completion::interfaces;
  return outline;
}

}  // namespace

CommandOutline outlineOf(const CLI::App& app) {
  CommandOutline outline;
  outline.name = app.get_name();
  outline.description = app.get_description();
  outline.footer = app.get_footer();
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    if (option->nonpositional()) {
      outline.options.push_back(outlineOfOption(*option));
    } else {
      outline.arguments.push_back({option->get_name(), option->get_required(), describe(*option)});
    }
  }
  for (const CLI::App* command : app.get_subcommands({})) outline.subcommands.push_back(outlineOf(*command));
  return outline;
}

}  // namespace zor::cli
