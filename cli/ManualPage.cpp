#include <sstream>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/Generate.h"

namespace zor::cli {
namespace {

constexpr char kExitStatus[] =
    ".SH EXIT STATUS\n"
    ".TP\n.B 0\nIt did what it was asked for.\n"
    ".TP\n.B 1\nThe run failed; standard error says why and what to try.\n"
    ".TP\n.B 2\nWrong use; one line on standard error says what is wrong and what to do.\n"
    ".TP\n.B 130, 143, 129, 131\nCtrl-C, SIGTERM, SIGHUP or SIGQUIT stopped it before it was done.\n";

/// `text` as roff shows it unchanged: a dash as a dash, and no line taken for a request.
std::string roff(const std::string& text) {
  std::string result;
  bool lineBegins = true;
  for (const char c : text) {
    if (lineBegins && (c == '.' || c == '\'')) result += "\\&";
    if (c == '-') {
      result += "\\-";
    } else if (c == '\\') {
      result += "\\e";
    } else {
      result += c;
    }
    lineBegins = c == '\n';
  }
  return result;
}

std::string bold(const std::string& text) {
  return "\\fB" + roff(text) + "\\fR";
}

std::string italic(const std::string& text) {
  return "\\fI" + roff(text) + "\\fR";
}

std::string entry(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + roff(text) + "\n";
}

std::string entryOf(const OptionOutline& option) {
  std::string head;
  for (const std::string& name : option.names) head += (head.empty() ? "" : ", ") + bold(name);
  if (!option.value.empty()) head += " " + italic(option.value);
  return entry(head, option.description);
}

std::string synopsisOf(const CommandOutline& command) {
  std::string line = bold("zorctl " + command.name);
  for (const ArgumentOutline& argument : command.arguments)
    line += argument.required ? " " + italic(argument.name) : " [" + italic(argument.name) + "]";
  return line + " [" + italic("option") + "...]\n";
}

/// Lines as they are: only an example may be longer than the page is wide.
std::string verbatim(const std::string& text) {
  return ".PP\n.nf\n" + roff(text) + "\n.fi\n";
}

std::string sectionOf(const CommandOutline& command) {
  std::string section = ".SS " + command.name + "\n" + roff(command.description) + ".\n";
  for (const ArgumentOutline& argument : command.arguments)
    section += entry(italic(argument.name), argument.description);
  for (const OptionOutline& option : command.options) section += entryOf(option);
  return section + verbatim(command.footer);
}

}  // namespace

std::string manualPage(const CommandOutline& tool) {
  std::ostringstream page;
  page << R"(.TH ZORCTL 1 "" "zorctl )" << ZOR_VERSION << "\" \"User Commands\"\n"
       << ".SH NAME\nzorctl \\- bring Wi\\-Fi modules onto a network, find them and upgrade them\n"
       << ".SH SYNOPSIS\n";
  const char* separator = "";
  for (const CommandOutline& command : tool.subcommands) {
    page << separator << synopsisOf(command);
    separator = ".br\n";
  }
  page << ".SH DESCRIPTION\n" << roff(tool.description) << "\n.SH OPTIONS\n";
  for (const OptionOutline& option : tool.options) page << entryOf(option);
  page << ".SH SUBCOMMANDS\n";
  for (const CommandOutline& command : tool.subcommands) page << sectionOf(command);
  page << kExitStatus;
  return page.str();
}

}  // namespace zor::cli
