#include "receiver/module/ModuleLife.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "receiver/capture/NetworkInterface.h"

namespace zor::receiver {
namespace {

constexpr std::chrono::milliseconds kFramesReportInterval{100};
/// A capture only falls silent when its interface is removed, so the module checks the interface itself.
constexpr std::chrono::milliseconds kInterfaceCheckInterval{1000};
/// No sender pauses this long within a run. After such a pause another run starts, which is news even with
/// the same credentials.
constexpr std::int64_t kRunOverMicroseconds = 3'000'000;
constexpr std::uint16_t kDefaultNotificationPort = 25010;
constexpr std::uint8_t kPortRecord = 1;

/// The notification port that the append bytes ask for, in a record of three bytes: type, low byte, high
/// byte.
std::uint16_t notificationPortOf(const std::vector<std::uint8_t>& append) {
  if (append.size() < 3 || append[0] != kPortRecord) return kDefaultNotificationPort;
  const auto port = static_cast<std::uint16_t>(append[1] | append[2] << 8);
  return port != 0 ? port : kDefaultNotificationPort;
}

bool isAccepted(const std::optional<std::string>& accepted, const std::string& text) {
  return !accepted || *accepted == text;
}

}  // namespace

ModuleLife::ModuleLife(const VirtualModuleOptions& options, std::string pairs, ModuleServer& server,
                       const ModuleEventHandler& onEvent, int stopEvent)
    : options_(options),
      pairs_(std::move(pairs)),
      onEvent_(onEvent),
      stopEvent_(stopEvent),
      server_(server) {}

std::string ModuleLife::run() {
  std::string error = start();
  if (error.empty()) onEvent_(ModuleStarted{});
  while (error.empty()) {
    wait();
    if (isReadable(stopped)) break;
    error = turn();
  }
  return error;
}

std::string ModuleLife::start() {
  return options_.provisioned ? server_.open(pairs_) : frames_.open(options_.interface);
}

void ModuleLife::wait() {
  const auto source = [](int descriptor) { return pollfd{descriptor, POLLIN, 0}; };
  // In the order of Source. What does not exist yet has descriptor -1, which poll skips.
  sources_ = {source(stopEvent_), source(frames_.descriptor()), source(server_.requestDescriptor()),
              source(server_.upgrade().descriptor())};
  // An interrupted poll leaves no results, so the next turn looks at the timers only.
  static_cast<void>(poll(sources_.data(), sources_.size(), millisecondsToWait()));
}

int ModuleLife::millisecondsToWait() const {
  Instant next = std::min(nextInterfaceCheck_, server_.due().value_or(nextInterfaceCheck_));
  if (framesHeard_ != framesReported_) next = std::min(next, nextFramesReport_);
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

std::string ModuleLife::turn() {
  if (isReadable(frames)) {
    if (std::string error = hearFrames(); !error.empty()) return error;
  }
  // The download comes first: a request in the same turn may start another.
  if (isReadable(download)) server_.upgrade().reportChanges();
  const Instant now = std::chrono::steady_clock::now();
  if (isReadable(requests)) server_.answerRequests(now);
  server_.sendDue(now);
  if (framesHeard_ != framesReported_ && now >= nextFramesReport_) reportFrames(now);
  return now >= nextInterfaceCheck_ ? checkInterface(now) : std::string{};
}

std::string ModuleLife::checkInterface(Instant now) {
  nextInterfaceCheck_ = now + kInterfaceCheckInterval;
  const std::optional<NetworkInterface> interface = findInterface(options_.interface);
  if (!interface) return "the interface " + options_.interface + " has disappeared";
  return interface->isUp ? std::string{} : "the interface " + options_.interface + " is down";
}

std::string ModuleLife::hearFrames() {
  std::string error = frames_.read([this](const Observation& observation) { hear(observation); });
  if (error.empty() && isJoining_) error = server_.open(pairs_);
  isJoining_ = false;
  return error;
}

void ModuleLife::hear(const Observation& observation) {
  ++framesHeard_;
  if (observation.timeMicroseconds - latestFrameMicroseconds_ > kRunOverMicroseconds) decoder_.reset();
  latestFrameMicroseconds_ = observation.timeMicroseconds;
  if (std::optional<Credentials> credentials = decoder_.observe(observation)) judge(*std::move(credentials));
}

void ModuleLife::judge(Credentials credentials) {
  const bool accepted = isAccepted(options_.acceptedSsid, credentials.ssid) &&
                        isAccepted(options_.acceptedPassPhrase, credentials.passPhrase);
  if (accepted) {
    isJoining_ = true;
    server_.announce(notificationPortOf(credentials.append), std::chrono::steady_clock::now());
  }
  onEvent_(CredentialsDecoded{std::move(credentials), accepted, framesHeard_});
}

void ModuleLife::reportFrames(Instant now) {
  framesReported_ = framesHeard_;
  nextFramesReport_ = now + kFramesReportInterval;
  onEvent_(FramesHeard{framesHeard_, decoder_.progress()});
}

}  // namespace zor::receiver
