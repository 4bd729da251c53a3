#include "receiver/module/ModuleRequests.h"

#include <algorithm>
#include <charconv>

namespace zor::receiver {
namespace {

constexpr std::string_view kTag = "xcmd_req:";
constexpr std::size_t kMaxHost = 127;
constexpr std::size_t kMaxFile = 512;

/// The C library's classification depends on the locale; these lines are ASCII.
bool isLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool beginsWithTag(std::string_view line) {
  return line.size() >= kTag.size() &&
         std::equal(kTag.begin(), kTag.end(), line.begin(), [](char a, char b) { return a == lowerCase(b); });
}

/// The number that `text` spells in decimal; nothing if any of it is not part of the number.
template <typename Number>
std::optional<Number> numberOf(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

bool isHost(std::string_view text) {
  return !text.empty() && text.size() <= kMaxHost && text.front() != '-' &&
         std::all_of(text.begin(), text.end(),
                     [](char c) { return isLetterOrDigit(c) || c == '.' || c == '-'; });
}

bool isFile(std::string_view text) {
  return !text.empty() && text.size() <= kMaxFile && text.front() == '/' &&
         std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

/// The keys of a request that this module knows.
struct Pairs {
  std::optional<std::string_view> command, host, port, file;

  std::optional<std::string_view>* slotOf(std::string_view key) {
    if (key == "cmd") return &command;
    if (key == "host") return &host;
    if (key == "port") return &port;
    if (key == "file") return &file;
    return nullptr;
  }
};

/// A pair without '=' makes the line unreadable: it is the rest of a value that held a comma, and fetching
/// the file with the shorter name would be worse than fetching none.
std::optional<Pairs> readPairs(std::string_view text) {
  Pairs pairs;
  while (!text.empty()) {
    const std::string_view pair = text.substr(0, text.find(','));
    text.remove_prefix(std::min(pair.size() + 1, text.size()));
    const std::size_t equals = pair.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    std::optional<std::string_view>* slot = pairs.slotOf(pair.substr(0, equals));
    if (slot == nullptr) continue;
    if (slot->has_value()) return std::nullopt;
    *slot = pair.substr(equals + 1);
  }
  return pairs;
}

/// Fills in an upgrade's server and file. Returns kAccepted, or the value of ret that refuses them.
int readUpgrade(const Pairs& pairs, ModuleRequest& request) {
  if (!pairs.host || !pairs.file) return ret::kUnreadable;
  if (!isHost(*pairs.host)) return ret::kBadHost;
  if (pairs.port) {
    const auto port = numberOf<std::uint16_t>(*pairs.port);
    if (!port || *port == 0) return ret::kBadPort;
    request.port = *port;
  }
  if (!isFile(*pairs.file)) return ret::kBadFile;
  request.host = *pairs.host;
  request.file = *pairs.file;
  return ret::kAccepted;
}

void readCommand(std::string_view text, ModuleRequest& request) {
  const std::optional<Pairs> pairs = readPairs(text);
  if (!pairs || !pairs->command) return;
  if (*pairs->command == "info") {
    request.command = ModuleRequest::Command::info;
    request.result = ret::kAccepted;
  } else if (*pairs->command == "upgradestatus") {
    request.command = ModuleRequest::Command::upgradeStatus;
    request.result = ret::kAccepted;
  } else if (*pairs->command == "upgrade") {
    request.command = ModuleRequest::Command::upgrade;
    request.result = readUpgrade(*pairs, request);
  }
}

}  // namespace

std::optional<ModuleRequest> readModuleRequest(std::string_view datagram) {
  if (datagram.size() > ModuleRequest::kMaxLength || !beginsWithTag(datagram)) return std::nullopt;
  std::string_view line = datagram.substr(0, datagram.find_last_not_of("\t\n\r ") + 1);
  line.remove_prefix(kTag.size());

  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto id = numberOf<std::int32_t>(line.substr(0, colon));
  if (!id) return std::nullopt;

  ModuleRequest request;
  request.id = *id;
  readCommand(line.substr(colon + 1), request);
  return request;
}

}  // namespace zor::receiver
