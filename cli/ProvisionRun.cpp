#include "cli/ProvisionRun.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/FoundModules.h"
#include "cli/Hex.h"
#include "cli/MainQueue.h"
#include "cli/ProvisionProblem.h"
#include "cli/Route.h"
#include "cli/SmartConfigText.h"

namespace zor::cli {
namespace {

using std::chrono::milliseconds;

constexpr std::int32_t kAutomaticPort = 0;
constexpr std::int32_t kNoTimeout = std::numeric_limits<std::int32_t>::max();

constexpr milliseconds kPoll{100};  ///< How often the senders are checked and the live line is redrawn.

// The search ahead of the run: half a second, in which a module that repeats its announcement is heard too.
constexpr std::int32_t kSearchRequests = 5;
constexpr std::int32_t kSearchIntervalMs = 100;

bool sendersRun() {
  return s_threadSmartConfigMc || s_threadSmartConfigBc;
}

const char* modeName(SendMode mode) {
  switch (mode) {
    case SendMode::version3:
      return "version 3";
    case SendMode::mixed:
      return "version 5 mixed with version 3";
    case SendMode::version5:
      break;
  }
  return "version 5";
}

}  // namespace

ProvisionRun::ProvisionRun(const ProvisionPlan& plan, const Interrupt& interrupt, Output& output)
    : plan_(plan),
      interrupt_(interrupt),
      output_(output),
      progress_(output),
      modules_(std::make_shared<NewModules>(output, [this] { return packetSentWhole(); })),
      payload_(plan.payload),
      frames_(plan, plan.payload) {
  suite_.setDelegate(modules_);
}

Ending ProvisionRun::run() {
  openListener();
  namePort();
  reportStart();
  findEarlierModules();
  send();
  linger();
  stop();
  return ending();
}

void ProvisionRun::openListener() {
  // A version 3 run cannot name a port to modules.
  port_ = suite_.SmartConfigOnlineListen(plan_.mode == SendMode::version3 ? kZorAnnouncementPort
                                                                          : kAutomaticPort);
  if (port_ >= 0) return;
  if (plan_.mode == SendMode::version3) {
    throw RunFailure(
        "UDP port 25010 could not be opened and version 3 supports no other: end the program that holds it");
  }
  throw RunFailure(
      "no UDP port from 25010 up could be opened: check 'ulimit -n' and the permission to use sockets");
}

/// Names the listening port in the append bytes, unless it is the default or the user chose those bytes.
void ProvisionRun::namePort() {
  if (port_ == kZorAnnouncementPort) return;
  if (plan_.appendGiven) {
    output_.complain("UDP port 25010 is taken, so announcements are expected on port " +
                     std::to_string(port_) + "; modules know that only if the --append bytes name it");
    return;
  }
  const auto record = ZorMakePortRecord(port_);
  payload_.append.assign(record.begin(), record.end());
  frames_ = PacketFrames(plan_, payload_);
  if (fits(payload_)) return;
  throw RunFailure("UDP port 25010 is taken, and SSID and pass phrase leave no room to name port " +
                   std::to_string(port_) + ": end the program that holds port 25010");
}

void ProvisionRun::reportStart() {
  const std::string& ssid = payload_.ssid;
  const std::string append = toHex(payload_.append);
  const std::string appendText = append.empty() ? "no append bytes" : "append bytes " + append;
  const Route multicast = findRoute(kMulticastDestination, plan_.interface);
  const Route broadcast = findRoute(kBroadcastDestination, plan_.interface);
  output_.report("sending \"" + printable(ssid) + "\" as " + modeName(plan_.mode) + ", " + appendText +
                     ", for up to " + std::to_string(plan_.timeout.count()) + " s; listening on UDP port " +
                     std::to_string(port_) + "; " + routesText(multicast, broadcast),
                 {{"event", "started"},
                  {"ssid", jsonText(ssid)},
                  {"encoding", modeName(plan_.mode)},
                  {"append", append},
                  {"timeout_seconds", plan_.timeout.count()},
                  {"linger_seconds", plan_.linger.count()},
                  {"port", port_},
                  {"multicast", routeJson(multicast)},
                  {"broadcast", routeJson(broadcast)}});
}

/// Asks which modules are on the network, so that these are not taken for new ones.
void ProvisionRun::findEarlierModules() {
  suite_.DeviceSearchSetProperty(kSearchIntervalMs, kSearchRequests);
  suite_.DeviceSearch();
  while (s_threadDeviceSearch && !interrupt_.raised()) wait(kPoll / 5);
  s_threadDeviceSearch.cancel();
  s_threadDeviceSearch.waitUntilEmpty();
  ZorRunMainQueue(0);
}

void ProvisionRun::startSenders() {
  start_ = Clock::now();
  isSending_ = true;
  if (plan_.mode == SendMode::version3) {
    suite_.SmartConfigV3_Start(payload_.ssid, payload_.passPhrase, kNoTimeout);
    return;
  }
  if (plan_.pace) suite_.SmartConfigV5_SetProperty(plan_.pace->data(), plan_.pace->size());
  suite_.SmartConfigV5_MixV3Enable(plan_.mode == SendMode::mixed);
  const std::vector<std::uint8_t>& append = payload_.append;
  suite_.SmartConfigV5_Append(append.empty() ? nullptr : append.data(), append.size());
  suite_.SmartConfigV5_Start(payload_.ssid, payload_.passPhrase, kNoTimeout);
}

void ProvisionRun::send() {
  startSenders();
  follow(plan_.timeout, true);
  stopSenders();
}

/// Ends the senders and leaves the listener: a cancelled sender does not end it.
void ProvisionRun::stopSenders() {
  s_threadSmartConfigBc.cancel();
  s_threadSmartConfigMc.cancel();
  s_threadSmartConfigBc.waitUntilEmpty();
  s_threadSmartConfigMc.waitUntilEmpty();
}

/// Listens on, since joining takes a module seconds, unless no module can have heard anything.
void ProvisionRun::linger() {
  if (packetSentWhole()) follow(plan_.linger, false);
  interrupted_ = interrupt_.raised() && !enoughFound();
}

/// Ends the listener, then delivers what it has heard.
void ProvisionRun::stop() {
  s_threadSmartOnlineListen.cancel();
  s_threadSmartOnlineListen.waitUntilEmpty();
  ZorRunMainQueue(0);
}

/// Follows one phase of the run to its end.
void ProvisionRun::follow(std::chrono::seconds phase, bool sending) {
  const Clock::time_point end = Clock::now() + phase;
  while (!enoughFound() && !interrupt_.raised()) {
    const Clock::duration left = end - Clock::now();
    look(sending, std::max(left, Clock::duration::zero()), phase);
    if (left <= Clock::duration::zero() || (sending && !sendersRun())) return;
    wait(std::min(kPoll, std::chrono::ceil<milliseconds>(left)));
  }
}

void ProvisionRun::look(bool sending, Clock::duration left, std::chrono::seconds phase) {
  const ZorRunReport report = suite_.SmartConfigReport();
  failedMulticasts_.look(report.multicast.failedSends, report.multicast.error, output_);
  failedBroadcasts_.look(report.broadcast.failedSends, report.broadcast.error, output_);
  reportFailedChannel(report);
  progress_.show({.report = report,
                  .found = modules_->count(),
                  .expected = plan_.expected,
                  .sending = sending,
                  .left = std::chrono::ceil<milliseconds>(left),
                  .phase = std::max<milliseconds>(phase, milliseconds(1))});
}

void ProvisionRun::wait(milliseconds limit) {
  clocks_.noteWait(runMainQueueFor(static_cast<int>(limit.count()), interrupt_), limit);
}

/// A channel that fails does not end the run while the other one continues.
void ProvisionRun::reportFailedChannel(const ZorRunReport& report) {
  const std::int32_t status = s_ZorDevice.smartStatus;
  if (status >= 0 || status == failure_) return;
  failure_ = status;
  const bool isMulticast = status > kZorBroadcastSync1Failed;
  const std::string problem =
      explainSmartConfig(status, (isMulticast ? report.multicast : report.broadcast).error.number);
  output_.complain(problem);
  output_.reportJson({{"event", "channel_failed"}, {"status", status}, {"problem", problem}});
}

bool ProvisionRun::enoughFound() const {
  return plan_.module.empty() ? modules_->count() >= plan_.expected : modules_->hasNew(plan_.module);
}

bool ProvisionRun::packetSentWhole() {
  return isSending_ && frames_.sentWhole(suite_.SmartConfigReport());
}

/// Why the run failed; empty when it did not.
std::string ProvisionRun::problem() {
  if (enoughFound()) return {};
  if (interrupted_) return "stopped by a signal; every worker has ended";
  return explainRun({.plan = plan_,
                     .modules = *modules_,
                     .report = suite_.SmartConfigReport(),
                     .sentWhole = packetSentWhole(),
                     .stoodStill = clocks_.stoodStill()});
}

Ending ProvisionRun::ending() {
  const double took = std::chrono::duration<double>(Clock::now() - start_).count();
  char tookText[32];
  std::snprintf(tookText, sizeof tookText, "%.1f", took);
  const ZorRunReport report = suite_.SmartConfigReport();
  return {.problem = problem(),
          .stopped = interrupted_,
          .summary = moduleCount(modules_->count()) + " provisioned after " + tookText + " s",
          .details = {{"modules", modules_->count()},
                      {"seconds", std::round(took * 10) / 10},
                      {"frames", report.multicast.datagrams + report.broadcast.datagrams},
                      {"failed_sends", report.multicast.failedSends + report.broadcast.failedSends}}};
}

}  // namespace zor::cli
