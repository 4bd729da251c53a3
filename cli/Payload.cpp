#include "cli/Payload.h"

#include <cstddef>

#include "ZOR/ZorSuite.h"
#include "cli/ExitCode.h"

namespace zor::cli {
namespace {

void checkLength(const char* what, std::size_t length, std::size_t limit) {
  if (length <= limit) return;
  throw WrongUse(std::string(what) + " takes " + std::to_string(length) + " bytes: give at most " +
                 std::to_string(limit));
}

}  // namespace

bool fits(const Payload& payload) {
  return payload.ssid.size() + payload.passPhrase.size() + payload.append.size() <= kZorMaxPayloadLength;
}

void checkLengths(const Payload& payload) {
  if (payload.ssid.empty()) throw WrongUse("the SSID is empty: give the network's name with --ssid");
  checkLength("the SSID", payload.ssid.size(), kZorMaxSsidLength);
  checkLength("the pass phrase", payload.passPhrase.size(), kZorMaxPassPhraseLength);
  checkLength("--append", payload.append.size(), kZorMaxAppendLength);
  if (fits(payload)) return;
  const std::size_t texts = payload.ssid.size() + payload.passPhrase.size();
  throw WrongUse("SSID and pass phrase take " + std::to_string(texts) + " bytes and leave room for " +
                 std::to_string(kZorMaxPayloadLength - texts) + " bytes of --append: give no more");
}

}  // namespace zor::cli
