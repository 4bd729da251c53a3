#include "cli/DecodeView.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "cli/CompletionText.h"
#include "cli/ExpectedTime.h"
#include "cli/KnownPaces.h"
#include "cli/SenderText.h"

namespace zor::cli {
namespace {

using receiver::Finding;
using receiver::FindingKind;

std::vector<Finding> findingsOf(const receiver::SenderReport& sender) {
  std::vector<Finding> findings = receiver::judge(sender, knownPaces());
  for (Finding& finding : findings) {
    if (finding.kind == FindingKind::tooSparse) {
      finding.text +=
          "; at this loss a module needs " + expectedTime(receiver::mainLeg(sender)) + " (simulated median)";
    }
  }
  return findings;
}

}  // namespace

void DecodeView::showFrame(std::uint64_t number, const receiver::CapturedFrame& frame) {
  const double seconds = secondsSince(start_, frame.timeMicroseconds);
  std::array<char, 32> secondsText{};
  std::snprintf(secondsText.data(), secondsText.size(), "%.3f s  ", seconds);
  const std::string source = addressText(frame.source, frame.addressesAreIpv4);
  const std::string destination = receiver::textOf(frame.destination);
  output_.report(secondsText.data() + source + " > " + destination + "  " + std::to_string(frame.length) +
                     (frame.isRetry ? "  retry" : ""),
                 {{"event", "frame"},
                  {"frame", number},
                  {"seconds", seconds},
                  {"leg", legName(frame.leg)},
                  {"source", source},
                  {"destination", destination},
                  {"length", frame.length},
                  {"header_bytes", frame.headerBytes},
                  {"protected", frame.isProtected},
                  {"retry", frame.isRetry}});
}

void DecodeView::showCompletion(const receiver::CapturedFrame& frame,
                                const receiver::Completion& completion) {
  const std::string address = addressText(frame.source, frame.addressesAreIpv4);
  const CompletionText shown = describe(completion, address, start_, showSecrets_);
  output_.report(shown.text, shown.event);
}

Json DecodeView::showSender(const receiver::SenderReport& sender) {
  const std::string address = addressText(sender.address, sender.addressIsIpv4);
  Json findings = Json::array();
  std::string text = "sender " + address + ": ";
  for (const Finding& finding : findingsOf(sender)) {
    text += (findings.empty() ? "" : "\n  also: ") + finding.text;
    findings.push_back({{"finding", receiver::nameOf(finding.kind)}, {"text", finding.text}});
  }
  Json legs = Json::array();
  for (const receiver::LegReport& leg : sender.legs) {
    text += "\n" + legLines(leg);
    legs.push_back(legJson(leg));
  }
  Json event = {
      {"event", "sender"},    {"sender", address},           {"verdict", findings.front().at("finding")},
      {"findings", findings}, {"unicasts", sender.unicasts}, {"legs", legs}};
  output_.report(text, event);
  return event;
}

std::vector<Json> DecodeView::showSenders(const receiver::CaptureReport& report) {
  std::vector<Json> events;
  for (const receiver::SenderReport& sender : report.senders) events.push_back(showSender(sender));
  return events;
}

std::string summaryOf(const receiver::CaptureReport& report) {
  if (report.senders.empty()) return receiver::judgeEmpty(report).text;
  const auto complete = std::ranges::count_if(
      report.senders, [](const receiver::SenderReport& sender) { return !sender.completions.empty(); });
  return std::to_string(report.frames) + " frames, " + std::to_string(report.senders.size()) +
         (report.senders.size() == 1 ? " sender, " : " senders, ") + std::to_string(complete) + " complete";
}

}  // namespace zor::cli
