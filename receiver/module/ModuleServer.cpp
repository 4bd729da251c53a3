#include "receiver/module/ModuleServer.h"

#include <system_error>
#include <utility>

#include "receiver/capture/NetworkInterface.h"

namespace zor::receiver {
namespace {

constexpr int kMaxRequestsPerTurn = 64;  // A flood leaves time for the rest of the module.
constexpr int kNotifications = 5;
constexpr std::chrono::milliseconds kNotificationInterval{200};

}  // namespace

ModuleServer::ModuleServer(const VirtualModuleOptions& options, ModuleEventHandler onEvent)
    : options_(options), onEvent_(std::move(onEvent)), upgrade_(options.downloadPath, onEvent_) {}

std::string ModuleServer::open(const std::string& pairs) {
  if (socket_.descriptor() >= 0) return {};
  pairs_ = pairs;
  const std::optional<NetworkInterface> interface = findInterface(options_.interface);
  if (interface && interface->hasIpv4) boundInterface_ = options_.interface;
  return socket_.open(kPort, boundInterface_);
}

void ModuleServer::announce(std::uint16_t port, Instant now) {
  notificationPort_ = port;
  notificationsLeft_ = kNotifications;
  nextNotification_ = now;
  isAnnounced_ = false;
}

std::optional<ModuleServer::Instant> ModuleServer::due() const {
  return notificationsLeft_ > 0 ? std::optional(nextNotification_) : std::nullopt;
}

void ModuleServer::sendDue(Instant now) {
  if (notificationsLeft_ == 0 || now < nextNotification_) return;
  --notificationsLeft_;
  nextNotification_ = now + kNotificationInterval;
  const std::string line = "xcmd_notify:" + std::to_string(++notifications_) + ":" + pairs_;
  if (!send(socket_, line, broadcastAddress(notificationPort_)) || isAnnounced_) return;
  isAnnounced_ = true;
  onEvent_(ModuleAnnounced{notificationPort_, line});
}

void ModuleServer::answerRequests(Instant now) {
  for (int i = 0; i < kMaxRequestsPerTurn; ++i) {
    sockaddr_in from{};
    const std::optional<std::string_view> datagram = socket_.receive(buffer_, from);
    if (!datagram) return;
    // Port 0 cannot be answered.
    const std::optional<ModuleRequest> request = readModuleRequest(*datagram);
    if (request && from.sin_port != 0) answer(*request, from, now);
  }
}

void ModuleServer::answer(const ModuleRequest& request, const sockaddr_in& from, Instant now) {
  switch (request.command) {
    case ModuleRequest::Command::unreadable:
      return answerValue(request.id, "ret", request.result, from);
    case ModuleRequest::Command::info:
      sendAnswer("xcmd_rsp:" + std::to_string(request.id) + ":" + pairs_, from);
      return onEvent_(InfoRequested{textOf(from)});
    case ModuleRequest::Command::upgrade:
      return answerCommand(request.id, upgrade_.command(request, boundInterface_, now), from);
    case ModuleRequest::Command::upgradeStatus:
      return answerStatus(request.id, from);
  }
}

void ModuleServer::answerCommand(std::int32_t id, int result, const sockaddr_in& to) {
  answerValue(id, "ret", result, to);
}

void ModuleServer::answerStatus(std::int32_t id, const sockaddr_in& to) {
  const int status = upgrade_.status();
  answerValue(id, "status", status, to);
  // A phone keeps waiting after a negative status. It stops when its command turns out to have failed.
  if (status < 0) answerValue(upgrade_.commandId(), "ret", status, to);
}

void ModuleServer::answerValue(std::int32_t id, const std::string& key, int value, const sockaddr_in& to) {
  sendAnswer("xcmd_rsp:" + std::to_string(id) + ":" + key + "=" + std::to_string(value), to);
}

void ModuleServer::sendAnswer(const std::string& line, const sockaddr_in& to) {
  send(socket_, line, to);
}

bool ModuleServer::send(const ModuleSocket& from, const std::string& line, const sockaddr_in& to) {
  const int error = from.send(line + "\r\n", to);
  if (error != 0) onEvent_(SendFailed{std::generic_category().message(error)});
  return error == 0;
}

}  // namespace zor::receiver
