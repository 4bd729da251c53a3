#include "ZOR/upgrade/UpgradeCommand.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "ZOR/protocol/RequestFormats.h"

namespace {

constexpr std::string_view kScheme = "http://";
constexpr std::size_t kMostHost = 127;
constexpr std::size_t kMostPort = 15;

/// The longest command line that a module takes, and what is left in it for the data.
constexpr std::size_t kLongestCommand = 512;
constexpr std::size_t kMostData = kLongestCommand - (std::string_view(zor::kUpgradeRequest).size() - 2);
static_assert(kMostData < kZorUpgradeCmdDataSize);

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Appends texts to a buffer that is known to hold them.
class Appender {
 public:
  explicit Appender(char* out) : end_(out) { *end_ = '\0'; }

  Appender& operator<<(std::string_view text) {
    end_ += text.copy(end_, text.size());
    *end_ = '\0';
    return *this;
  }

 private:
  char* end_;
};

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
  if (host.size() > kMostHost || port.size() > kMostPort) return kZorUrlRefused;
  if (std::any_of(rest.begin(), rest.end(), isControl)) return kZorUrlRefused;

  constexpr std::string_view kHostKey = "host=", kPortKey = ",port=", kFileKey = ",file=";
  const std::size_t portSize = hasPort ? kPortKey.size() + port.size() : 0;
  if (kHostKey.size() + host.size() + portSize + kFileKey.size() + file.size() > kMostData) {
    return kZorUrlRefused;
  }
  Appender data(out);
  data << kHostKey << host;
  if (hasPort) data << kPortKey << port;
  data << kFileKey << file;
  return 0;
}
