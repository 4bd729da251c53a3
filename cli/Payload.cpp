#include "cli/Payload.h"

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

void checkLengths(const Payload& payload) {
  if (payload.ssid.empty()) throw WrongUse("the SSID is empty: give the network's name with --ssid");
  checkLength("the SSID", payload.ssid.size(), kLongestSsid);
  checkLength("the pass phrase", payload.passPhrase.size(), kLongestPassPhrase);
  checkLength("--append", payload.append.size(), kMostAppend);
  const std::size_t texts = payload.ssid.size() + payload.passPhrase.size();
  if (texts + payload.append.size() <= kLargestPayload) return;
  throw WrongUse("SSID and pass phrase take " + std::to_string(texts) + " bytes and leave room for " +
                 std::to_string(kLargestPayload - texts) + " bytes of --append: give no more");
}

}  // namespace zor::cli
