#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace zor::cli {

/// What the value of an option can be completed with.
enum class Completion { none, files, interfaces };

/// An option as its help describes it.
struct OptionOutline {
  std::vector<std::string> names;  ///< With their dashes, such as "-h" and "--help".
  std::string value;               ///< The name of its value; empty for one that takes none.
  std::string description;
  std::vector<std::string> words;  ///< Values that can be listed.
  Completion completion = Completion::none;
};

/// An argument that is no option.
struct ArgumentOutline {
  std::string name;
  bool required = false;
  std::string description;
};

/// A subcommand, or the tool as a whole, as its help describes it.
struct CommandOutline {
  std::string name;
  std::string description;
  std::string footer;
  std::vector<OptionOutline> options;
  std::vector<ArgumentOutline> arguments;
  std::vector<CommandOutline> subcommands;
};

/// Reads the command line of `app`, without what its help hides.
CommandOutline outlineOf(const CLI::App& app);

}  // namespace zor::cli
