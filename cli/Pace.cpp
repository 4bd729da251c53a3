#include "cli/Pace.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>

#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

constexpr std::size_t kMulticastLengthBase = 0;
constexpr std::size_t kBroadcastLengthBase = 7;

/// The separated words of `text`; commas and line ends separate as blanks do.
std::istringstream words(std::string text) {
  for (char& c : text) {
    if (c == ',') c = ' ';
  }
  return std::istringstream(text);
}

std::uint8_t readValue(const std::string& word) {
  std::uint8_t value = 0;
  const char* const end = word.data() + word.size();
  const auto [parsed, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || parsed != end) {
    throw WrongUse("'" + printable(word) + "' is not a pacing value: give whole numbers from 0 to 255");
  }
  return value;
}

Pace readValues(const std::string& text) {
  Pace pace{};
  std::size_t count = 0;
  std::istringstream stream = words(text);
  for (std::string word; stream >> word; ++count) {
    const std::uint8_t value = readValue(word);
    if (count < pace.size()) pace[count] = value;
  }
  if (count != pace.size()) {
    throw WrongUse("--pace takes 14 values and got " + std::to_string(count) +
                   ": see 'zorctl provision --help'");
  }
  if (pace[kMulticastLengthBase] == 0 && pace[kBroadcastLengthBase] == 0) {
    throw WrongUse("--pace switches both channels off: make value 1 or value 8 greater than 0");
  }
  return pace;
}

/// "default, fast, ...".
std::string paceNames() {
  std::string names;
  for (const ZorPace& pace : kZorPaces) names += (names.empty() ? "" : ", ") + std::string(pace.name);
  return names;
}

std::string readFile(const std::string& name) {
  std::ifstream file(name);
  std::string text;
  for (std::string line; std::getline(file, line);) text += line.substr(0, line.find('#')) + "\n";
  if (!file.eof()) {
    throw WrongUse("--pace: '" + printable(name) + "' is no pace and no file that can be read (" +
                   std::strerror(errno) + "): give " + paceNames() +
                   ", 14 values separated by commas, or a file that holds them");
  }
  return text;
}

}  // namespace

Pace readPace(const std::string& argument) {
  if (const ZorPace* const named = ZorFindPace(argument)) return named->values;
  const bool isList = argument.find_first_not_of("0123456789, \t") == std::string::npos;
  return readValues(isList ? argument : readFile(argument));
}

}  // namespace zor::cli
