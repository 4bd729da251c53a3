#include "receiver/module/MisbehavingServer.h"

#include <algorithm>
#include <utility>

namespace zor::receiver {
namespace {

constexpr std::chrono::seconds kSlowness{2};
constexpr std::size_t kMaxGarbage = 600;  // Longer than a phone's buffers for a value.

constexpr int kNegativeStatus = -3;

/// The id that phones give to their status requests.
constexpr std::int32_t kStatusId = 321;
constexpr int kStatusesBeforeCommandAnswer = 4;  // One in place of the answer, and three more.
/// The upgrade must not seem complete before the late answer, or no phone would wait for it.
constexpr int kMaxStatusBeforeCommandAnswer = 50;

std::string withCapitalTag(std::string line) {
  const auto end = line.begin() + static_cast<std::ptrdiff_t>(std::min(line.find(':'), line.size()));
  std::transform(line.begin(), end, line.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return line;
}

}  // namespace

MisbehavingServer::MisbehavingServer(const VirtualModuleOptions& options, ModuleEventHandler onEvent)
    : ModuleServer(options, std::move(onEvent)), misbehaviour_(options.misbehaviour) {}

std::string MisbehavingServer::open(const std::string& pairs) {
  std::string error = ModuleServer::open(pairs);
  const bool isComplete = misbehaviour_ != Misbehaviour::otherPort || otherSocket_.descriptor() >= 0;
  return error.empty() && !isComplete ? otherSocket_.open(0, boundInterface()) : error;
}

std::optional<ModuleServer::Instant> MisbehavingServer::due() const {
  const std::optional<Instant> notification = ModuleServer::due();
  if (waiting_.empty()) return notification;
  return std::min(waiting_.front().due, notification.value_or(Instant::max()));
}

void MisbehavingServer::sendDue(Instant now) {
  for (; !waiting_.empty() && waiting_.front().due <= now; waiting_.pop_front()) {
    send(socket(), waiting_.front().line, waiting_.front().to);
  }
  ModuleServer::sendDue(now);
}

void MisbehavingServer::answerCommand(std::int32_t id, int result, const sockaddr_in& to) {
  if (misbehaviour_ != Misbehaviour::lateCommandAnswer || result != ret::kAccepted) {
    return ModuleServer::answerCommand(id, result, to);
  }
  // A phone that hears a status before the answer to its command starts to ask for the status.
  statusesBeforeCommandAnswer_ = kStatusesBeforeCommandAnswer;
  answerStatus(kStatusId, to);
}

void MisbehavingServer::answerStatus(std::int32_t id, const sockaddr_in& to) {
  if (misbehaviour_ == Misbehaviour::negativeStatus) return answerValue(id, "status", kNegativeStatus, to);
  if (statusesBeforeCommandAnswer_ == 0) return ModuleServer::answerStatus(id, to);
  const int status = std::min(upgrade().status(), kMaxStatusBeforeCommandAnswer);
  answerValue(id, "status", status, to);
  if (--statusesBeforeCommandAnswer_ == 0) {
    answerValue(upgrade().commandId(), "ret", ret::kAccepted, to);
  } else if (status < 0) {
    answerValue(upgrade().commandId(), "ret", status, to);
  }
}

void MisbehavingServer::sendAnswer(const std::string& line, const sockaddr_in& to) {
  if (misbehaviour_ == Misbehaviour::slowAnswers) {
    const Instant now = std::chrono::steady_clock::now();
    if (waiting_.size() < kMaxWaiting) waiting_.push_back({now + kSlowness, line, to});
  } else if (misbehaviour_ == Misbehaviour::otherPort) {
    send(otherSocket_, line, to);
  } else {
    ModuleServer::sendAnswer(line, to);
  }
}

bool MisbehavingServer::send(const ModuleSocket& from, const std::string& line, const sockaddr_in& to) {
  switch (misbehaviour_) {
    case Misbehaviour::silent:
      return true;
    case Misbehaviour::capitals:
      return ModuleServer::send(from, withCapitalTag(line), to);
    case Misbehaviour::garbageLines: {
      from.send(garbage(), to);
      const bool isSent = ModuleServer::send(from, line, to);
      from.send(garbage(), to);
      return isSent;
    }
    default:
      return ModuleServer::send(from, line, to);
  }
}

std::string MisbehavingServer::garbage() {
  std::string bytes(std::uniform_int_distribution<std::size_t>(1, kMaxGarbage)(random_), '\0');
  std::uniform_int_distribution<int> byte(0, 255);
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(byte(random_)); });
  return bytes;
}

}  // namespace zor::receiver
