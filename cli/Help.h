#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zor::cli {

/// Help as wide as the terminal, or 80 columns: options with the name of their value, and below each other
/// their descriptions with default, need and exclusions in words.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter();

  std::string make_description(const CLI::App* app) const override;
  std::string make_footer(const CLI::App* app) const override;
  std::string make_subcommand(const CLI::App* app) const override;
  std::string make_option(const CLI::Option* option, bool isPositional) const override;

 private:
  std::string entry(const std::string& name, const std::string& description) const;

  std::size_t width_;
};

/// What the option is for, then what the parser demands of it.
std::string describe(const CLI::Option& option);

/// Why the arguments that `app` left over cannot be meant, with the subcommand or option that is spelled most
/// alike, in one line; empty when it left none over.
std::string explainLeftovers(const CLI::App& app);

}  // namespace zor::cli
