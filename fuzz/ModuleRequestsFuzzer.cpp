#include <string>

#include "fuzz/Fuzz.h"
#include "receiver/module/ModuleRequests.h"

using zor::receiver::ModuleRequest;
using zor::receiver::readModuleRequest;

namespace {

/// The request as a phone would have written it.
std::string write(const ModuleRequest& request) {
  const std::string head = "xcmd_req:" + std::to_string(request.id) + ":cmd=";
  if (request.command == ModuleRequest::Command::info) return head + "info,\r\n";
  if (request.command == ModuleRequest::Command::upgradeStatus) return head + "upgradestatus\r\n";
  return head + "upgrade,host=" + request.host + ",port=" + std::to_string(request.port) +
         ",file=" + request.file + "\r\n";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto request = readModuleRequest({reinterpret_cast<const char*>(bytes), size});
  if (!request) return 0;
  require(size <= ModuleRequest::kMaxLength);
  if (request->result != zor::receiver::ret::kAccepted) {
    require(request->result < 0);
    return 0;
  }
  require(request->command != ModuleRequest::Command::unreadable);
  if (request->command == ModuleRequest::Command::upgrade) {
    // What goes into a URL must not be able to end it, or to be read as anything but host and path.
    require(request->host.find_first_of("/@:?#\\ \r\n") == std::string::npos && !request->host.empty());
    require(request->file.front() == '/' && request->file.find_first_of(" \r\n") == std::string::npos);
    require(request->port != 0);
  }
  const std::string again = write(*request);
  if (again.size() > ModuleRequest::kMaxLength) return 0;
  const auto reread = readModuleRequest(again);
  require(reread && reread->result == request->result && reread->id == request->id);
  require(reread->host == request->host && reread->port == request->port && reread->file == request->file);
  return 0;
}
