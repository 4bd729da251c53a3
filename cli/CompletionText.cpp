#include "cli/CompletionText.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "cli/Escape.h"
#include "cli/Hex.h"
#include "cli/SenderText.h"

namespace zor::cli {
namespace {

/// The first byte, if it is printable ASCII, and an asterisk for each other.
std::string maskedSsid(const std::string& ssid) {
  std::string masked(ssid.size(), '*');
  if (!ssid.empty() && ssid[0] > ' ' && ssid[0] <= '~') masked[0] = ssid[0];
  return masked;
}

std::string bytesText(std::size_t count) {
  return " (" + std::to_string(count) + (count == 1 ? " byte)" : " bytes)");
}

}  // namespace

double secondsSince(std::int64_t start, std::int64_t timeMicroseconds) {
  return std::round(static_cast<double>(timeMicroseconds - start)) / 1e6;
}

CompletionText describe(const receiver::Completion& completion, const std::string& address,
                        std::int64_t start, bool showSecrets) {
  const receiver::Credentials& found = completion.credentials;
  const std::string ssid = showSecrets ? printable(found.ssid) : maskedSsid(found.ssid);
  const std::string passPhrase =
      showSecrets ? printable(found.passPhrase) : std::string(found.passPhrase.size(), '*');
  const std::string append = showSecrets ? toHex(found.append) : std::string(2 * found.append.size(), '*');
  const double seconds = secondsSince(start, completion.timeMicroseconds);
  std::array<char, 32> secondsText{};
  std::snprintf(secondsText.data(), secondsText.size(), "%.3f s", seconds);

  CompletionText shown;
  shown.text = std::string(secondsText.data()) + ", frame " + std::to_string(completion.frame) + ": " +
               address + ", " + legText(completion.leg) + ", version " +
               std::to_string(static_cast<int>(found.encoding)) + ", SSID \"" + ssid + "\"" +
               bytesText(found.ssid.size()) + ", pass phrase \"" + passPhrase + "\"" +
               bytesText(found.passPhrase.size());
  if (!found.append.empty()) shown.text += ", append bytes " + append;
  shown.event = {{"event", "completed"},
                 {"sender", address},
                 {"leg", legName(completion.leg)},
                 {"seconds", seconds},
                 {"frame", completion.frame},
                 {"version", static_cast<int>(found.encoding)},
                 {"ssid_length", found.ssid.size()},
                 {"pass_phrase_length", found.passPhrase.size()},
                 {"append_length", found.append.size()}};
  if (showSecrets) {
    shown.event["ssid"] = jsonText(found.ssid);
    shown.event["pass_phrase"] = jsonText(found.passPhrase);
    shown.event["append"] = append;
  } else {
    shown.event["ssid_masked"] = ssid;
    shown.event["pass_phrase_masked"] = passPhrase;
  }
  return shown;
}

}  // namespace zor::cli
