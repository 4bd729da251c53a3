#include "receiver/ModuleServer.h"

#include <algorithm>
#include <utility>

#include "receiver/NetworkInterface.h"

namespace zor::receiver {
namespace {

constexpr int kRequestsPerTurn = 64;  // A flood leaves time for the rest of the module.

/// The id that phones give to their status requests.
constexpr std::int32_t kStatusId = 321;

constexpr int kMisbehavingStatus = -3;
constexpr int kStatusesBeforeLateAnswer = 3;
/// Until its late answer the module is not done, or nobody would wait for that answer.
constexpr int kMaxStatusBeforeLateAnswer = 50;

}  // namespace

ModuleServer::ModuleServer(const VirtualModuleOptions& options, VirtualModule::EventHandler onEvent)
    : options_(options),
      onEvent_(std::move(onEvent)),
      sender_(socket_, options.misbehaviour,
              [this](const std::string& reason) {
                ModuleEvent event;
                event.kind = ModuleEvent::Kind::sendFailed;
                event.text = reason;
                onEvent_(event);
              }),
      upgrade_(options.downloadPath, onEvent_) {}

std::string ModuleServer::open(const std::string& pairs) {
  if (socket_.descriptor() >= 0) return {};
  pairs_ = pairs;
  const std::optional<NetworkInterface> interface = findInterface(options_.interface);
  if (interface && interface->hasIpv4) boundInterface_ = options_.interface;
  const std::string error = socket_.open(kPort, boundInterface_);
  return error.empty() ? sender_.open(boundInterface_) : error;
}

std::optional<std::string> ModuleServer::announce(std::uint16_t port) {
  const std::string line = "xcmd_notify:" + std::to_string(++notifications_) + ":" + pairs_;
  return sender_.notify(line, broadcastAddress(port)) ? std::optional(line) : std::nullopt;
}

void ModuleServer::answerRequests(Instant now) {
  for (int i = 0; i < kRequestsPerTurn; ++i) {
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
      return answerResult(request.id, request.result, from, now);
    case ModuleRequest::Command::info: {
      sender_.answer("xcmd_rsp:" + std::to_string(request.id) + ":" + pairs_, from, now);
      ModuleEvent event;
      event.kind = ModuleEvent::Kind::infoRequest;
      event.text = textOf(from);
      return onEvent_(event);
    }
    case ModuleRequest::Command::upgrade:
      return answerUpgrade(request, from, now);
    case ModuleRequest::Command::upgradeStatus:
      return answerStatus(request.id, from, now);
  }
}

void ModuleServer::answerUpgrade(const ModuleRequest& request, const sockaddr_in& from, Instant now) {
  const int result = upgrade_.command(request, boundInterface_, now);
  if (options_.misbehaviour == Misbehaviour::lateCommandAnswer && result == ret::kAccepted) {
    // A phone that hears a status before the answer to its command goes on to ask for the status.
    statusesToCommandAnswer_ = kStatusesBeforeLateAnswer + 1;
    return answerStatus(kStatusId, from, now);
  }
  answerResult(request.id, result, from, now);
}

void ModuleServer::answerStatus(std::int32_t id, const sockaddr_in& from, Instant now) {
  const bool isScripted = options_.misbehaviour == Misbehaviour::negativeStatus;
  int status = isScripted ? kMisbehavingStatus : upgrade_.status();
  if (statusesToCommandAnswer_ > 0) status = std::min(status, kMaxStatusBeforeLateAnswer);
  sender_.answer("xcmd_rsp:" + std::to_string(id) + ":status=" + std::to_string(status), from, now);

  if (statusesToCommandAnswer_ > 0 && --statusesToCommandAnswer_ == 0) {
    answerResult(upgrade_.commandId(), ret::kAccepted, from, now);
  } else if (status < 0 && !isScripted) {
    // Phones wait on when a status is negative; that the command has failed after all ends their waiting.
    answerResult(upgrade_.commandId(), status, from, now);
  }
}

void ModuleServer::answerResult(std::int32_t id, int result, const sockaddr_in& from, Instant now) {
  sender_.answer("xcmd_rsp:" + std::to_string(id) + ":ret=" + std::to_string(result), from, now);
}

}  // namespace zor::receiver
