#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zor::receiver {

/// Values of the ret key in answers to requests, and of the status key after an upgrade has failed.
namespace ret {
inline constexpr int kAccepted = 0;
inline constexpr int kUnreadable = -1;  ///< Unknown command, a key missing or twice, a pair without '='.
inline constexpr int kBadHost = -2;     ///< Not 1 to 127 letters, digits, '.' and '-', or '-' comes first.
inline constexpr int kBadPort = -3;     ///< Not a decimal number from 1 to 65535.
inline constexpr int kBadFile = -4;     ///< Not '/' and up to 511 printable ASCII characters without spaces.
inline constexpr int kBusy = -5;        ///< Another upgrade is running.
inline constexpr int kDownloadFailed = -6;  ///< The file could not be fetched or stored.
}  // namespace ret

/// A request line to a module:
///     "xcmd_req:" id ":" "cmd=" command { "," key "=" value } [","] CR LF
/// The tag is read in capitals too, the keys are not. White space at the end is ignored.
struct ModuleRequest {
  enum class Command { unreadable, info, upgrade, upgradeStatus };

  /// Length of the longest line that is read, in bytes.
  static constexpr std::size_t kMaxLength = 1024;

  std::int32_t id = 0;
  Command command = Command::unreadable;
  /// kAccepted, or the value of ret that refuses the request; then host, port and file mean nothing.
  int result = ret::kUnreadable;
  std::string host;  ///< Of an upgrade; safe to put into a URL.
  std::uint16_t port = 80;
  std::string file;  ///< Of an upgrade; begins with '/', safe to put into a URL.
};

/// Reads the request in a datagram that may hold anything. A pure function. Returns nothing if the datagram
/// is not a request that could be answered: too long, another tag, or no 32-bit decimal id. Else returns the
/// request, whose `result` says whether it can be obeyed.
std::optional<ModuleRequest> readModuleRequest(std::string_view datagram);

}  // namespace zor::receiver
