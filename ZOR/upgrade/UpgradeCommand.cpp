#include "ZOR/upgrade/UpgradeCommand.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "ZOR/protocol/RequestFormats.h"

namespace {

constexpr std::string_view kScheme = "http://";
constexpr std::size_t kMaxHostLength = 127;
constexpr std::size_t kMaxPortLength = 15;

/// The longest command line that a module takes, and what is left in it for the data.
constexpr std::size_t kMaxCommandLength = 512;
constexpr std::size_t kMaxDataLength =
    kMaxCommandLength - (std::string_view(zor::kUpgradeRequest).size() - 2);
static_assert(kMaxDataLength < kZorUpgradeCmdDataSize);

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

}  // namespace

std::int32_t ZorBuildUpgradeCmdData(const char* URL, char* out) {
  const std::string_view url(URL);
  if (url.substr(0, kScheme.size()) != kScheme) return kZorUrlNotHttp;
  const std::string_view rest = url.substr(kScheme.size());

  const std::size_t slash = rest.find('/');
  const std::size_t colon = rest.find(':');
  if (slash == std::string_view::npos) return kZorUrlRefused;
  const bool hasPort = colon != std::string_view::npos;
  if (hasPort && colon > slash) return kZorUrlRefused;

  const std::string_view host = rest.substr(0, hasPort ? colon : slash);
  const std::string_view port = hasPort ? rest.substr(colon + 1, slash - colon - 1) : std::string_view();
  const std::string_view file = rest.substr(slash);
  if (host.size() > kMaxHostLength || port.size() > kMaxPortLength) return kZorUrlRefused;
  if (std::any_of(rest.begin(), rest.end(), isControl)) return kZorUrlRefused;

  const std::string_view pieces[] = {"host=", host, hasPort ? ",port=" : "", port, ",file=", file};
  std::size_t length = 0;
  for (const std::string_view piece : pieces) length += piece.size();
  if (length > kMaxDataLength) return kZorUrlRefused;
  for (const std::string_view piece : pieces) out += piece.copy(out, piece.size());
  *out = '\0';
  return 0;
}
