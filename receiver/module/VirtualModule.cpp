#include "receiver/module/VirtualModule.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "receiver/capture/NetworkInterface.h"
#include "receiver/module/MisbehavingServer.h"
#include "receiver/module/ModuleLife.h"

namespace zor::receiver {
namespace {

/// With its tag and line end a line stays below a phone's 512 bytes.
constexpr std::size_t kMaxPairsLength = 480;

bool isPrintable(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool isValue(const std::string& text) {
  return isPrintable(text) && text.find(',') == std::string::npos;
}

/// Composes the pairs that say which module this is. Returns empty, or one line that says which option cannot
/// be part of a line.
std::string makePairs(const VirtualModuleOptions& options, std::string& pairs) {
  const std::optional<NetworkInterface> interface = findInterface(options.interface);
  if (!interface) return "there is no interface " + options.interface;
  const std::string mac = options.mac.empty() ? textOf(interface->mac) : options.mac;
  if (!isValue(mac)) return "the mac holds a comma or something unprintable";
  if (!isValue(options.version)) return "the version holds a comma or something unprintable";
  if (!isValue(options.capabilities)) return "the capabilities hold a comma or something unprintable";
  if (!isPrintable(options.extension)) return "the extension holds something unprintable";
  pairs = "mac=" + mac + ",ver=" + options.version + ",cap=" + options.capabilities;
  if (!options.extension.empty()) pairs += "," + options.extension;
  if (pairs.size() <= kMaxPairsLength) return {};
  return "mac, version, capabilities and extension are too long for a line";
}

}  // namespace

VirtualModule::VirtualModule(VirtualModuleOptions options, ModuleEventHandler onEvent)
    : options_(std::move(options)),
      onEvent_(std::move(onEvent)),
      stopEvent_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

VirtualModule::~VirtualModule() {
  if (stopEvent_ >= 0) close(stopEvent_);
}

std::string VirtualModule::run() {
  if (stopEvent_ < 0) return "no descriptor left for stopping the module";
  std::string pairs;
  if (std::string error = makePairs(options_, pairs); !error.empty()) return error;
  MisbehavingServer server(options_, onEvent_);
  return ModuleLife(options_, std::move(pairs), server, onEvent_, stopEvent_).run();
}

// NOLINTNEXTLINE(readability-make-member-function-const): the module is not the same afterwards.
void VirtualModule::stop() {
  // In a signal handler, the interrupted code may be about to read errno.
  const int saved = errno;
  static_cast<void>(eventfd_write(stopEvent_, 1));
  errno = saved;
}

}  // namespace zor::receiver
