#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "receiver/LineSender.h"
#include "receiver/ModuleRequests.h"
#include "receiver/ModuleSocket.h"
#include "receiver/ModuleUpgrade.h"
#include "receiver/VirtualModule.h"

namespace zor::receiver {

/// What a module does on the network: answers requests on its UDP port, fetches upgrades, announces itself.
/// Not thread-safe; nothing blocks. Events are handed over on the calling thread.
class ModuleServer {
 public:
  using Instant = LineSender::Instant;

  static constexpr std::uint16_t kPort = 25000;

  /// `options` outlives this object.
  ModuleServer(const VirtualModuleOptions& options, VirtualModule::EventHandler onEvent);

  /// Enters the network. Does nothing when it is there already.
  /// \param pairs the key=value pairs that say which module this is.
  /// \return empty or one line that says why not.
  std::string open(const std::string& pairs);

  /// Sends a notification to every host of the network. \return its line if it could be sent.
  std::optional<std::string> announce(std::uint16_t port);

  /// Readable when answerRequests() has something to do; -1 outside the network.
  int requestDescriptor() const { return socket_.descriptor(); }
  void answerRequests(Instant now);

  ModuleUpgrade& upgrade() { return upgrade_; }
  LineSender& sender() { return sender_; }
  const LineSender& sender() const { return sender_; }

 private:
  void answer(const ModuleRequest& request, const sockaddr_in& from, Instant now);
  void answerUpgrade(const ModuleRequest& request, const sockaddr_in& from, Instant now);
  void answerStatus(std::int32_t id, const sockaddr_in& from, Instant now);
  void answerResult(std::int32_t id, int result, const sockaddr_in& from, Instant now);

  const VirtualModuleOptions& options_;
  VirtualModule::EventHandler onEvent_;
  ModuleSocket socket_;
  LineSender sender_;
  ModuleUpgrade upgrade_;
  std::string pairs_;
  std::string boundInterface_;  ///< Empty while the module borrows the host's addresses.
  std::uint32_t notifications_ = 0;
  int statusesToCommandAnswer_ = 0;  ///< Above 0: so many, then the command's late answer.
  std::array<char, ModuleRequest::kMaxLength> buffer_{};
};

}  // namespace zor::receiver
