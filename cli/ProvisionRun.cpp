#include "cli/ProvisionRun.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cli/Escape.h"
#include "cli/ExitCode.h"
#include "cli/Hex.h"
#include "cli/MainQueue.h"
#include "cli/ProgressBar.h"
#include "cli/SmartConfigText.h"

namespace zor::cli {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::int32_t kDefaultPort = 25010;  ///< Where modules announce themselves unless told otherwise.
constexpr std::int32_t kAutomaticPort = 0;
constexpr std::uint8_t kPortRecord = 1;

constexpr int kLookMs = 100;  ///< How soon the end of a sender is noticed, and the pace of the live line.
constexpr seconds kJsonProgress{1};
constexpr seconds kTextProgress{10};

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

ProvisionRun::ProvisionRun(const ProvisionPlan& plan, const Interrupt& interrupt, const LogLines& logLines,
                           Output& output)
    : plan_(plan),
      interrupt_(interrupt),
      logLines_(logLines),
      output_(output),
      modules_(std::make_shared<FoundModules>(
          [&output](const FoundModule& module) { output.report(foundText(module), foundEvent(module)); })),
      append_(plan.payload.append) {
  suite_.setDelegate(modules_);
}

int ProvisionRun::run() {
  openListener();
  namePort();
  tellStart();
  startSenders();
  started_ = sendersRun();
  follow();
  stop();
  return tellEnd();
}

void ProvisionRun::openListener() {
  // A version 3 run cannot name a port to the module.
  port_ = suite_.SmartConfigOnlineListen(plan_.mode == SendMode::version3 ? kDefaultPort : kAutomaticPort);
  if (port_ >= 0) return;
  if (plan_.mode == SendMode::version3) {
    throw RunFailure(
        "UDP port 25010 could not be opened and version 3 knows no other: end the program that holds it");
  }
  throw RunFailure(
      "no UDP port from 25010 up could be opened: check 'ulimit -n' and the permission to use sockets");
}

/// Tells the module in the append bytes where to announce itself, unless that is the usual port or the user
/// gave other bytes.
void ProvisionRun::namePort() {
  if (port_ == kDefaultPort) return;
  if (plan_.appendGiven) {
    output_.complain("UDP port 25010 is taken, so this listens on port " + std::to_string(port_) +
                     "; the module learns of it only if the --append bytes name it");
    return;
  }
  append_ = {kPortRecord, static_cast<std::uint8_t>(port_ % 256), static_cast<std::uint8_t>(port_ / 256)};
  Payload withPort = plan_.payload;
  withPort.append = append_;
  try {
    checkLengths(withPort);
  } catch (const WrongUse&) {
    throw RunFailure("UDP port 25010 is taken, and SSID and pass phrase leave no room to name port " +
                     std::to_string(port_) + ": end the program that holds port 25010");
  }
}

void ProvisionRun::startSenders() {
  const Payload& payload = plan_.payload;
  const auto timeoutMs = static_cast<std::int32_t>(milliseconds(plan_.timeout).count());
  start_ = nextProgress_ = Clock::now();
  if (plan_.mode == SendMode::version3) {
    suite_.SmartConfigV3_Start(payload.ssid, payload.passPhrase, timeoutMs);
    return;
  }
  if (plan_.pace) suite_.SmartConfigV5_SetProperty(plan_.pace->data(), plan_.pace->size());
  suite_.SmartConfigV5_MixV3Enable(plan_.mode == SendMode::mixed);
  suite_.SmartConfigV5_Append(append_.empty() ? nullptr : append_.data(), append_.size());
  suite_.SmartConfigV5_Start(payload.ssid, payload.passPhrase, timeoutMs);
}

void ProvisionRun::follow() {
  while (sendersRun() && !enoughFound() && !interrupt_.raised()) {
    tellFailedChannel();
    tellProgress();
    runMainQueueFor(kLookMs, interrupt_);
  }
  interrupted_ = interrupt_.raised() && !enoughFound();
}

/// Ends the workers that still run and takes in what the listener has heard till then.
void ProvisionRun::stop() {
  suite_.SmartConfigStop();
  s_threadSmartConfigBc.waitUntilEmpty();
  s_threadSmartConfigMc.waitUntilEmpty();
  s_threadSmartOnlineListen.waitUntilEmpty();
  ZorRunMainQueue(0);
  tellFailedChannel();
}

void ProvisionRun::tellStart() {
  const std::string ssid = plan_.payload.ssid;
  const std::string append = append_.empty() ? "no append bytes" : "append bytes " + toHex(append_);
  output_.report("telling modules of \"" + printable(ssid) + "\" in " + modeName(plan_.mode) + ", " + append +
                     ", for up to " + std::to_string(plan_.timeout.count()) + " s; listening on UDP port " +
                     std::to_string(port_),
                 {{"event", "started"},
                  {"ssid", codePoints(ssid)},
                  {"encoding", modeName(plan_.mode)},
                  {"append", toHex(append_)},
                  {"timeout_seconds", plan_.timeout.count()},
                  {"port", port_}});
}

void ProvisionRun::tellProgress() {
  const auto now = Clock::now();
  const auto passed = std::min<Clock::duration>(now - start_, plan_.timeout);
  const auto percent = static_cast<int>(passed * 100 / plan_.timeout);
  const auto left = std::chrono::ceil<seconds>(plan_.timeout - passed).count();
  const std::string timeLeft = std::to_string(left) + " s left";
  output_.showLive(progressBar(percent) + "  " + timeLeft);
  if (output_.isLive() || now < nextProgress_) return;
  nextProgress_ += output_.isText() ? kTextProgress : kJsonProgress;
  output_.report(std::to_string(percent) + " %, " + timeLeft,
                 {{"event", "progress"}, {"percent", percent}, {"seconds_left", left}});
}

/// A channel that fails does not end the run while the other one goes on.
void ProvisionRun::tellFailedChannel() {
  const std::int32_t status = s_ZorDevice.smartStatus;
  if (status >= 0 || status == failure_) return;
  failure_ = status;
  output_.complain(explainSmartConfig(status));
  output_.reportJson(
      {{"event", "channel_failed"}, {"status", status}, {"problem", explainSmartConfig(status)}});
}

/// Why the run failed, empty when it did not.
std::string ProvisionRun::problem() const {
  if (enoughFound()) return {};
  if (interrupted_) return "stopped by a signal; every worker has ended";
  if (failure_ < 0 && Clock::now() - start_ < plan_.timeout)
    return "the run ended early: no channel could go on sending";
  if (!started_) {
    return "no sender started: another program may have taken UDP port " + std::to_string(port_) +
           ", or the system gives no thread; end that program or raise 'ulimit -u', then try again";
  }
  const std::string time = " within " + std::to_string(plan_.timeout.count()) + " s";
  if (modules_->count() > 0) {
    return "only " + std::to_string(modules_->count()) + " of " + std::to_string(plan_.expected) +
           " modules announced themselves" + time + ": check the others, and give more time with --timeout";
  }
  return "no module announced itself" + time +
         ": check that the module waits for smart configuration, that SSID and pass phrase are right, that "
         "this computer is on the same 2.4 GHz network, and that a firewall lets UDP port " +
         std::to_string(port_) + " in" + logLines_.failedSends();
}

int ProvisionRun::tellEnd() {
  const std::string text = problem();
  const double took = std::chrono::duration<double>(Clock::now() - start_).count();
  char tookText[32];
  std::snprintf(tookText, sizeof tookText, "%.1f", took);
  Json event = {{"event", "finished"}, {"ok", text.empty()}, {"modules", modules_->count()}};
  event["seconds"] = std::round(took * 10) / 10;
  if (!text.empty()) event["problem"] = text;
  output_.report(moduleCount(modules_->count()) + " provisioned after " + tookText + " s", event);
  if (text.empty()) return output_.exitCode();
  output_.complain(text);
  return kFailure;
}

}  // namespace zor::cli
