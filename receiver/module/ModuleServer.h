#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "receiver/module/ModuleEvent.h"
#include "receiver/module/ModuleRequests.h"
#include "receiver/module/ModuleSocket.h"
#include "receiver/module/ModuleUpgrade.h"
#include "receiver/module/VirtualModule.h"

namespace zor::receiver {

/// What a module does on the network: announces itself, answers requests on its UDP port, fetches upgrades.
/// Not thread-safe; nothing blocks. Events are handed over on the calling thread.
class ModuleServer {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  static constexpr std::uint16_t kPort = 25000;

  /// `options` outlives this object.
  ModuleServer(const VirtualModuleOptions& options, ModuleEventHandler onEvent);
  virtual ~ModuleServer() = default;
  ModuleServer(const ModuleServer&) = delete;
  ModuleServer& operator=(const ModuleServer&) = delete;

  /// Enters the network; does nothing when the module is there already. `pairs` are the key=value pairs that
  /// say which module this is. Returns empty, or one line that says why it failed.
  virtual std::string open(const std::string& pairs);

  /// Starts a series of notifications, which sendDue() broadcasts to this UDP port. Ends a series that is
  /// still running.
  void announce(std::uint16_t port, Instant now);

  /// When sendDue() next has something to send; nothing if there is nothing.
  virtual std::optional<Instant> due() const;
  virtual void sendDue(Instant now);

  /// Readable when answerRequests() has something to do; -1 outside the network.
  int requestDescriptor() const { return socket_.descriptor(); }
  void answerRequests(Instant now);

  ModuleUpgrade& upgrade() { return upgrade_; }

 protected:
  /// Answers an upgrade command that has led to `result`.
  virtual void answerCommand(std::int32_t id, int result, const sockaddr_in& to);
  virtual void answerStatus(std::int32_t id, const sockaddr_in& to);
  /// Sends an answer. `line` has no line end yet, here and below.
  virtual void sendAnswer(const std::string& line, const sockaddr_in& to);
  /// Sends a line from one of the module's sockets. Returns true unless it failed.
  virtual bool send(const ModuleSocket& from, const std::string& line, const sockaddr_in& to);

  /// Sends "key=value" as the answer to the request with this id.
  void answerValue(std::int32_t id, const std::string& key, int value, const sockaddr_in& to);

  const ModuleSocket& socket() const { return socket_; }
  /// The interface that sockets are bound to; empty while the module borrows the host's addresses.
  const std::string& boundInterface() const { return boundInterface_; }

 private:
  void answer(const ModuleRequest& request, const sockaddr_in& from, Instant now);

  const VirtualModuleOptions& options_;
  ModuleEventHandler onEvent_;
  ModuleSocket socket_;
  ModuleUpgrade upgrade_;
  std::string pairs_;
  std::string boundInterface_;
  std::array<char, ModuleRequest::kMaxLength> buffer_{};

  std::uint32_t notifications_ = 0;  ///< Sent so far, in all series.
  std::uint16_t notificationPort_ = 0;
  int notificationsLeft_ = 0;
  bool isAnnounced_ = false;  ///< A notification of the latest series was sent.
  Instant nextNotification_{};
};

}  // namespace zor::receiver
