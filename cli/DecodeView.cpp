#include "cli/DecodeView.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "cli/Escape.h"
#include "cli/ExpectedTime.h"
#include "cli/Hex.h"
#include "cli/KnownPaces.h"
#include "cli/SenderText.h"

namespace zor::cli {
namespace {

using receiver::Finding;
using receiver::FindingKind;

std::string secondsText(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.3f s", seconds);
  return text.data();
}

/// The first byte, if it is printable ASCII, and an asterisk for each other.
std::string maskedSsid(const std::string& ssid) {
  std::string masked(ssid.size(), '*');
  if (!ssid.empty() && ssid[0] > ' ' && ssid[0] <= '~') masked[0] = ssid[0];
  return masked;
}

std::string bytesText(std::size_t count) {
  return " (" + std::to_string(count) + (count == 1 ? " byte)" : " bytes)");
}

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

double DecodeView::secondsOf(std::int64_t timeMicroseconds) const {
  return std::round(static_cast<double>(timeMicroseconds - start_)) / 1e6;
}

void DecodeView::showFrame(std::uint64_t number, const receiver::CapturedFrame& frame) {
  const double seconds = secondsOf(frame.timeMicroseconds);
  const std::string source = addressText(frame.source, frame.addressesAreIpv4);
  const std::string destination = receiver::textOf(frame.destination);
  output_.report(secondsText(seconds) + "  " + source + " > " + destination + "  " +
                     std::to_string(frame.length) + (frame.isRetry ? "  retry" : ""),
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
  const receiver::Credentials& found = completion.credentials;
  const std::string ssid = showSecrets_ ? printable(found.ssid) : maskedSsid(found.ssid);
  const std::string passPhrase =
      showSecrets_ ? printable(found.passPhrase) : std::string(found.passPhrase.size(), '*');
  const std::string append = showSecrets_ ? toHex(found.append) : std::string(2 * found.append.size(), '*');
  const double seconds = secondsOf(completion.timeMicroseconds);
  const std::string address = addressText(frame.source, frame.addressesAreIpv4);
  std::string text = secondsText(seconds) + ", frame " + std::to_string(completion.frame) + ": " + address +
                     ", " + legText(completion.leg) + ", version " +
                     std::to_string(static_cast<int>(found.encoding)) + ", SSID \"" + ssid + "\"" +
                     bytesText(found.ssid.size()) + ", pass phrase \"" + passPhrase + "\"" +
                     bytesText(found.passPhrase.size());
  if (!found.append.empty()) text += ", append bytes " + append;
  Json event = {{"event", "completed"},
                {"sender", address},
                {"leg", legName(completion.leg)},
                {"seconds", seconds},
                {"frame", completion.frame},
                {"version", static_cast<int>(found.encoding)},
                {"ssid_length", found.ssid.size()},
                {"pass_phrase_length", found.passPhrase.size()},
                {"append_length", found.append.size()}};
  if (showSecrets_) {
    event["ssid"] = jsonText(found.ssid);
    event["pass_phrase"] = jsonText(found.passPhrase);
    event["append"] = append;
  } else {
    event["ssid_masked"] = ssid;
    event["pass_phrase_masked"] = passPhrase;
  }
  output_.report(text, event);
}

void DecodeView::showSender(const receiver::SenderReport& sender) {
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
  output_.report(text, {{"event", "sender"},
                        {"sender", address},
                        {"verdict", findings.front().at("finding")},
                        {"findings", findings},
                        {"unicasts", sender.unicasts},
                        {"legs", legs}});
}

std::string DecodeView::showReport(const receiver::CaptureReport& report) {
  std::size_t complete = 0;
  for (const receiver::SenderReport& sender : report.senders) {
    showSender(sender);
    if (!sender.completions.empty()) ++complete;
  }
  if (report.senders.empty()) return receiver::judgeEmpty(report).text;
  return std::to_string(report.frames) + " frames, " + std::to_string(report.senders.size()) +
         (report.senders.size() == 1 ? " sender, " : " senders, ") + std::to_string(complete) + " complete";
}

}  // namespace zor::cli
