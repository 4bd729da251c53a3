#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "ZOR/ZorSuite.h"
#include "fuzz/Fuzz.h"
#include "receiver/module/ModuleRequests.h"

namespace {

/// "http://host[:port]/path" taken apart.
struct Url {
  std::string host, file;
  std::optional<std::string> port;
};

std::optional<Url> split(const std::string& url) {
  if (url.rfind("http://", 0) != 0) return std::nullopt;
  const std::string rest = url.substr(7);
  const std::size_t slash = rest.find('/'), colon = rest.find(':');
  if (slash == std::string::npos || (colon != std::string::npos && colon > slash)) return std::nullopt;
  if (colon == std::string::npos) return Url{rest.substr(0, slash), rest.substr(slash), std::nullopt};
  return Url{rest.substr(0, colon), rest.substr(slash), rest.substr(colon + 1, slash - colon - 1)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string url = std::string(reinterpret_cast<const char*>(bytes), size).c_str();
  const auto out = std::make_unique<char[]>(kZorUpgradeCmdDataSize);
  std::memset(out.get(), '#', kZorUpgradeCmdDataSize);
  const std::int32_t result = ZorBuildUpgradeCmdData(url.c_str(), out.get());
  if (result < 0) {
    require(result == kZorUrlNotHttp || result == kZorUrlRefused);
    require((result == kZorUrlNotHttp) == (url.rfind("http://", 0) != 0));
    require(out[0] == '#' && out[kZorUpgradeCmdDataSize - 1] == '#');
    return 0;
  }
  const std::optional<Url> parts = split(url);
  require(parts && parts->host.size() < 128 && parts->port.value_or("").size() < 16);
  const std::string port = parts->port ? ",port=" + *parts->port : "";
  require("host=" + parts->host + port + ",file=" + parts->file == out.get());

  const std::string line = std::string("xcmd_req:123:cmd=upgrade,") + out.get() + "\r\n";
  require(line.size() <= 512 && line.find_first_of("\r\n") == line.size() - 2);
  const auto request = zor::receiver::readModuleRequest(line);
  require(request && request->id == 123);
  // A ',' ends a value and blanks end a line, so no line carries a URL that holds them.
  if (request->result != zor::receiver::ret::kAccepted || url.find_first_of(", ") != url.npos) return 0;
  require(request->host == parts->host && request->file == parts->file);
  require(!parts->port || std::stoi(*parts->port) == request->port);
  return 0;
}
