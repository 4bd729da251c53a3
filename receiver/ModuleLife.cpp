#include "receiver/ModuleLife.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "receiver/NetworkInterface.h"

namespace zor::receiver {
namespace {

using std::chrono::milliseconds;
using Kind = ModuleEvent::Kind;

constexpr milliseconds kFramesReportInterval{100};
constexpr milliseconds kNotificationInterval{200};
/// A capture on an interface that was taken away just falls silent, so the module looks for itself.
constexpr milliseconds kInterfaceCheckInterval{1000};
constexpr int kNotifications = 5;
/// Nobody pauses for so long within a run:
/// what comes then is another run, news even if its credentials are not.
constexpr std::int64_t kRunOverMicroseconds = 3'000'000;
constexpr std::uint16_t kDefaultNotificationPort = 25010;
constexpr std::uint8_t kPortRecord = 1;

/// The port that the append bytes ask to be notified on: a record of its type, low octet, high octet.
std::uint16_t notificationPortOf(const std::vector<std::uint8_t>& append) {
  if (append.size() < 3 || append[0] != kPortRecord) return kDefaultNotificationPort;
  const auto port = static_cast<std::uint16_t>(append[1] | append[2] << 8);
  return port != 0 ? port : kDefaultNotificationPort;
}

bool isAccepted(const std::optional<std::string>& accepted, const std::string& text) {
  return !accepted || *accepted == text;
}

}  // namespace

ModuleLife::ModuleLife(const VirtualModuleOptions& options, std::string pairs,
                       const VirtualModule::EventHandler& onEvent, int stopEvent)
    : options_(options),
      pairs_(std::move(pairs)),
      onEvent_(onEvent),
      stopEvent_(stopEvent),
      server_(options, onEvent) {}

std::string ModuleLife::run() {
  std::string error = start();
  if (error.empty()) reportStart();
  while (error.empty()) {
    wait();
    if (isReadable(kStop)) break;
    error = turn();
  }
  return error;
}

std::string ModuleLife::start() {
  return options_.provisioned ? server_.open(pairs_) : frames_.open(options_.interface);
}

void ModuleLife::reportStart() {
  ModuleEvent event;
  event.kind = Kind::started;
  onEvent_(event);
}

void ModuleLife::wait() {
  const auto source = [](int descriptor) { return pollfd{descriptor, POLLIN, 0}; };
  // In the order of Source. Descriptors of -1, of what does not exist yet, are skipped by poll.
  sources_ = {source(stopEvent_), source(frames_.descriptor()), source(server_.requestDescriptor()),
              source(server_.upgrade().descriptor())};
  // An interrupted poll leaves no results; the next turn then finds nothing but timers.
  static_cast<void>(poll(sources_.data(), sources_.size(), millisecondsToWait()));
}

int ModuleLife::millisecondsToWait() const {
  Instant next = server_.sender().due().value_or(nextInterfaceCheck_);
  const auto consider = [&next](Instant instant) { next = std::min(next, instant); };
  consider(nextInterfaceCheck_);
  if (framesHeard_ != framesReported_) consider(nextFramesReport_);
  if (notificationsLeft_ > 0) consider(nextNotification_);
  const auto left = std::chrono::ceil<milliseconds>(next - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

std::string ModuleLife::turn() {
  if (isReadable(kFrames)) {
    if (std::string error = hearFrames(); !error.empty()) return error;
  }
  // The download first: a request in the same turn may start another.
  if (isReadable(kDownload)) server_.upgrade().reportChanges();
  const Instant now = std::chrono::steady_clock::now();
  if (isReadable(kRequests)) server_.answerRequests(now);
  server_.sender().sendDue(now);
  if (notificationsLeft_ > 0 && now >= nextNotification_) announce(now);
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
  ModuleEvent event;
  event.kind = Kind::refused;
  if (isAccepted(options_.acceptedSsid, credentials.ssid) &&
      isAccepted(options_.acceptedPassPhrase, credentials.passPhrase)) {
    event.kind = Kind::decoded;
    isJoining_ = true;
    notificationPort_ = notificationPortOf(credentials.append);
    notificationsLeft_ = kNotifications;
    nextNotification_ = std::chrono::steady_clock::now();
    isAnnounced_ = false;
  }
  event.frames = framesHeard_;
  event.progress = decoder_.progress();
  event.credentials = std::move(credentials);
  onEvent_(event);
}

void ModuleLife::announce(Instant now) {
  --notificationsLeft_;
  nextNotification_ = now + kNotificationInterval;
  std::optional<std::string> line = server_.announce(notificationPort_);
  if (!line || isAnnounced_) return;
  isAnnounced_ = true;
  ModuleEvent event;
  event.kind = Kind::announced;
  event.text = *std::move(line);
  event.port = notificationPort_;
  onEvent_(event);
}

void ModuleLife::reportFrames(Instant now) {
  framesReported_ = framesHeard_;
  nextFramesReport_ = now + kFramesReportInterval;
  ModuleEvent event;
  event.frames = framesHeard_;
  event.progress = decoder_.progress();
  onEvent_(event);
}

}  // namespace zor::receiver
