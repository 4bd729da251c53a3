#include "cli/ProvisionProblem.h"

#include "cli/Escape.h"
#include "cli/SystemErrorText.h"

namespace zor::cli {
namespace {

std::string explainSender(const ZorSenderReport& sender) {
  if (sender.error.number == 0) return {};
  return sender.failedSends > 0 ? explainSendError(sender.error.number)
                                : explainSocketError(sender.error.number);
}

bool neverRan(const ZorSenderReport& sender) {
  return sender.state == ZorWorkerState::idle || sender.state == ZorWorkerState::noThread;
}

/// Why no frame left.
std::string explainNothingSent(const ZorRunReport& report) {
  const std::string multicast = explainSender(report.multicast);
  const std::string broadcast = explainSender(report.broadcast);
  if (multicast.empty() && broadcast.empty()) {
    if (neverRan(report.multicast) && neverRan(report.broadcast))
      return "no sender started: another program may have taken UDP port 25010, or no thread could be "
             "created; end that program or raise 'ulimit -u', then try again";
    return "no frame left this computer";
  }
  if (multicast == broadcast || broadcast.empty()) return "no frame left this computer: " + multicast;
  if (multicast.empty()) return "no frame left this computer: " + broadcast;
  return "no frame left this computer: multicasts: " + multicast + "; broadcasts: " + broadcast;
}

/// What kept one channel silent while the other sent; empty when both sent or one was switched off.
std::string explainSilentChannel(const ZorRunReport& report) {
  const bool multicastSilent = report.multicast.datagrams == 0;
  const std::string cause = explainSender(multicastSilent ? report.multicast : report.broadcast);
  const bool oneSilent = multicastSilent || report.broadcast.datagrams == 0;
  if (!oneSilent || cause.empty()) return {};
  return std::string("only ") + (multicastSilent ? "broadcast" : "multicast") +
         " frames left this computer; " + (multicastSilent ? "multicast" : "broadcast") + " frames: " + cause;
}

std::string explainListener(const ZorListenerReport& listener) {
  if (listener.state != ZorWorkerState::noSocket) return {};
  return "the listener lost its socket: " + explainSocketError(listener.error.number);
}

/// What was received that is no announcement; empty when nothing was.
std::string explainRefused(const ZorListenerReport& listener) {
  const ZorLineReport& received = listener.received;
  const std::int64_t refused = received.otherContent + received.empty;
  if (refused > 0)
    return std::to_string(refused) + (refused == 1 ? " datagram" : " datagrams") + " reached UDP port " +
           std::to_string(listener.port) + " but " + std::to_string(received.otherContent) +
           " held no announcement and " + std::to_string(received.empty) +
           " held nothing: check what the module sends, or which other program uses that port";
  if (received.dropped > 0)
    return std::to_string(received.dropped) +
           " announcements were dropped because too many came at once: find who floods UDP port " +
           std::to_string(listener.port);
  return {};
}

/// Which modules announced themselves without being what the run waits for; empty when none did.
std::string explainOthers(const FailedRun& run) {
  const std::size_t found = run.modules.count();
  if (!run.plan.module.empty()) {
    const std::string name = "module " + printable(run.plan.module);
    if (run.modules.hasEarlier(run.plan.module))
      return name + " was on the network before: reset it and make it wait for smart configuration";
    if (found > 0) return name + " did not announce itself, though others did: check --module and the module";
  } else if (found > 0) {
    return "only " + std::to_string(found) + " of " + std::to_string(run.plan.expected) +
           " modules announced themselves: check the others, and give more time with --timeout";
  }
  if (run.modules.earlierCount() > 0)
    return "no new module announced itself, only what was on the network before: reset the module if it is "
           "among these, and check that it waits for smart configuration";
  return {};
}

std::string explainSilence(const FailedRun& run) {
  const ZorRunReport& report = run.report;
  return "no module announced itself, though " +
         std::to_string(report.multicast.datagrams + report.broadcast.datagrams) +
         " frames left: check that the module waits for smart configuration, that SSID and pass phrase are "
         "right, that this computer is on the same 2.4 GHz network, and that the firewall admits UDP port " +
         std::to_string(report.listener.port);
}

}  // namespace

std::string explainRun(const FailedRun& run) {
  const ZorRunReport& report = run.report;
  if (report.multicast.datagrams + report.broadcast.datagrams == 0) return explainNothingSent(report);
  if (run.stoodStill.count() > 0)
    return "zorctl stood still for " + std::to_string(run.stoodStill.count()) +
           " s of the run, stopped or on a computer that was asleep: let it run, then try again";
  if (!run.sentWhole)
    return "the packet was never sent whole: give more time with --timeout, or use a faster --pace";
  if (std::string text = explainListener(report.listener); !text.empty()) return text;
  if (std::string text = explainOthers(run); !text.empty()) return text;
  if (std::string text = explainRefused(report.listener); !text.empty()) return text;
  if (std::string text = explainSilentChannel(report); !text.empty()) return text;
  return explainSilence(run);
}

}  // namespace zor::cli
