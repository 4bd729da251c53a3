#include "cli/Credentials.h"

#include <fstream>

#include "cli/Escape.h"
#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

constexpr std::size_t kLongestSsid = 32;  // IEEE 802.11
constexpr std::size_t kMostAppend = 16;
constexpr std::size_t kLargestPayload = 96;

void checkLength(const char* what, std::size_t length, std::size_t limit) {
  if (length <= limit) return;
  throw WrongUse(std::string(what) + " takes " + std::to_string(length) + " bytes: give at most " +
                 std::to_string(limit));
}

}  // namespace

void checkLengths(const Credentials& credentials) {
  if (credentials.ssid.empty()) throw WrongUse("the SSID is empty: give the network's name with --ssid");
  checkLength("the SSID", credentials.ssid.size(), kLongestSsid);
  checkLength("the pass phrase", credentials.passPhrase.size(), kLongestPassPhrase);
  checkLength("--append", credentials.append.size(), kMostAppend);
  const std::size_t texts = credentials.ssid.size() + credentials.passPhrase.size();
  if (texts + credentials.append.size() <= kLargestPayload) return;
  throw WrongUse("SSID and pass phrase take " + std::to_string(texts) + " bytes and leave room for " +
                 std::to_string(kLargestPayload - texts) + " bytes of --append: give no more");
}

std::string readPassPhraseFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  // One byte more than the longest pass phrase and its line end shows what is too long.
  char bytes[kLongestPassPhrase + 3];
  file.read(bytes, sizeof bytes);
  if (file.bad() || (!file.eof() && file.gcount() == 0)) {
    throw WrongUse("--pass-file: cannot read '" + printable(name) +
                   "': give a file that holds the pass phrase");
  }
  std::string text(bytes, static_cast<std::size_t>(file.gcount()));
  if (text.ends_with('\n')) text.pop_back();
  if (text.ends_with('\r')) text.pop_back();
  if (text.empty()) {
    throw WrongUse("--pass-file: '" + printable(name) +
                   "' holds no pass phrase: use --pass '' for an open network");
  }
  if (text.find('\n') != std::string::npos || text.find('\0') != std::string::npos) {
    throw WrongUse("--pass-file: '" + printable(name) +
                   "' holds more than a pass phrase: leave one line in it");
  }
  if (text.size() > kLongestPassPhrase) {
    throw WrongUse("--pass-file: '" + printable(name) + "' holds more than " +
                   std::to_string(kLongestPassPhrase) + " bytes: give a shorter pass phrase");
  }
  return text;
}

}  // namespace zor::cli
