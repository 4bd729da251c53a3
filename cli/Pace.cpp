#include "cli/Pace.h"

#include <charconv>
#include <fstream>
#include <sstream>

#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

constexpr std::size_t kMulticastLengthBase = 0;
constexpr std::size_t kBroadcastLengthBase = 7;

struct NamedPace {
  const char* name;
  Pace pace;
};
constexpr NamedPace kNamedPaces[] = {
    // What the library does unless told otherwise.
    {"default", {30, 30, 100, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}},
    // The shortest intervals, so the most load on the network.
    {"fast", {30, 8, 0, 0, 1, 1, 5, 30, 9, 100, 0, 1, 1, 5}},
    // Somewhat longer intervals than fast, and the same repeats.
    {"robust", {30, 12, 0, 0, 1, 1, 5, 30, 15, 100, 0, 1, 1, 5}},
};

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
    throw WrongUse("'" + printable(word) + "' is no pacing value: give whole numbers from 0 to 255");
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
                   ": 'zorctl provision --help' names them");
  }
  if (pace[kMulticastLengthBase] == 0 && pace[kBroadcastLengthBase] == 0) {
    throw WrongUse("--pace switches both channels off: make value 1 or value 8 more than 0");
  }
  return pace;
}

std::string readFile(const std::string& name) {
  std::ifstream file(name);
  std::string text;
  for (std::string line; std::getline(file, line);) text += line.substr(0, line.find('#')) + "\n";
  if (!file.eof()) {
    throw WrongUse("--pace: cannot read the file '" + printable(name) +
                   "': give 14 values with commas between, or a file that holds them");
  }
  return text;
}

}  // namespace

Pace readPace(const std::string& argument) {
  for (const NamedPace& named : kNamedPaces) {
    if (argument == named.name) return named.pace;
  }
  const bool isList = argument.find_first_not_of("0123456789, \t") == std::string::npos;
  return readValues(isList ? argument : readFile(argument));
}

}  // namespace zor::cli
