#include "cli/Help.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <string_view>
#include <vector>

#include "cli/Escape.h"
#include "cli/Output.h"

namespace zor::cli {
namespace {

constexpr std::size_t kMinWidth = 40;
constexpr std::size_t kNameWidth = 26;    ///< Columns of names, on a terminal that has room for two columns.
constexpr std::size_t kNarrowIndent = 6;  ///< Where descriptions start on one that has not.
constexpr std::size_t kMinTwoColumns = 64;

/// `text` with lines broken at blanks so that none ends after column `width`. The first line starts at column
/// `used`, the others at `indent`. Keeps the line breaks of `text`.
std::string wrapped(const std::string& text, std::size_t used, std::size_t indent, std::size_t width) {
  std::string result;
  std::istringstream lines(text);
  std::size_t column = used;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const bool isFirst = column == indent || (result.empty() && column == used);
      if (!isFirst && column + 1 + word.size() > width) {
        result += "\n" + std::string(indent, ' ');
        column = indent;
      } else if (!isFirst) {
        result += ' ';
        ++column;
      }
      result += word;
      column += word.size();
    }
    if (!lines.eof()) {
      result += "\n" + std::string(indent, ' ');
      column = indent;
    }
  }
  return result;
}

/// The number of characters to insert, remove or replace to make one text the other (Levenshtein).
std::size_t distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), 0U);
  for (const char wanted : from) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (wanted == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

/// "; did you mean 'NAME'?" for the name that is most alike, empty when more than half of it differs.
std::string suggestion(const std::string& word, const std::vector<std::string>& names) {
  const auto differs = [&word](const std::string& name) { return distance(word, name); };
  const auto nearest = std::ranges::min_element(names, {}, differs);
  if (nearest == names.end() || differs(*nearest) * 2 > nearest->size()) return {};
  return "; did you mean '" + *nearest + "'?";
}

std::vector<std::string> subcommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;  // A hidden one.
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::string nameList(const std::set<CLI::Option*>& options) {
  std::string names;
  for (const CLI::Option* option : options) names += (names.empty() ? "" : " or ") + option->get_name();
  return names;
}

}  // namespace

std::string describe(const CLI::Option& option) {
  std::string text = option.get_description();
  if (option.get_required()) text += "; required";
  if (!option.get_default_str().empty()) text += "; default " + option.get_default_str();
  if (!option.get_excludes().empty()) text += "; not with " + nameList(option.get_excludes());
  return text;
}

HelpFormatter::HelpFormatter() : width_(std::max(kMinWidth, terminalWidth())) {}

std::string HelpFormatter::make_description(const CLI::App* app) const {
  return wrapped(app->get_description(), 0, 0, width_) + "\n";
}

std::string HelpFormatter::make_footer(const CLI::App* app) const {
  return app->get_footer().empty() ? "" : wrapped(app->get_footer(), 0, 0, width_) + "\n";
}

std::string HelpFormatter::make_subcommand(const CLI::App* app) const {
  return entry(app->get_name(), app->get_description());
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
  const std::string value = option->get_option_text();
  return entry(make_option_name(option, isPositional) + (value.empty() ? "" : " " + value),
               describe(*option));
}

/// One entry of a list. A name that is too long for its column stands on a line of its own.
std::string HelpFormatter::entry(const std::string& name, const std::string& description) const {
  const std::size_t indent = width_ >= kMinTwoColumns ? kNameWidth : kNarrowIndent;
  std::string line = "  " + name;
  if (line.size() + 2 > indent) {
    line += "\n" + std::string(indent, ' ');
  } else {
    line.append(indent - line.size(), ' ');
  }
  return line + wrapped(description, indent, indent, width_) + "\n";
}

std::string explainLeftovers(const CLI::App& app) {
  const std::vector<std::string> left = app.remaining(true);
  if (left.empty()) return {};
  const std::vector<const CLI::App*> named =
      app.get_subcommands([](const CLI::App* command) { return command->parsed(); });
  const CLI::App& command = named.empty() ? app : *named.front();
  const auto option =
      std::ranges::find_if(left, [](const std::string& word) { return word.starts_with('-'); });
  if (option != left.end()) {
    const std::string name = option->substr(0, option->find('='));
    return "there is no option '" + printable(name) + "'" + suggestion(name, optionNames(command));
  }
  if (!named.empty()) return "'" + printable(left.front()) + "' is one argument too many";
  return "there is no subcommand '" + printable(left.front()) + "'" +
         suggestion(left.front(), subcommandNames(app));
}

}  // namespace zor::cli
