#include "cli/ModuleView.h"

#include <algorithm>
#include <variant>

#include "cli/Escape.h"
#include "cli/Hex.h"
#include "receiver/decoder/MacAddress.h"

namespace zor::cli {
namespace {

using receiver::textOf;

/// How often what is a live line on a terminal is printed elsewhere.
constexpr std::chrono::seconds kFramesLineEvery{2};
constexpr int kPercentLineEvery = 25;
constexpr std::chrono::seconds kRequestsLineEvery{2};

/// How far the phone of which most is known has been understood.
std::string progressText(const receiver::DecoderProgress& progress) {
  const auto most = std::max_element(progress.begin(), progress.end(), [](const auto& a, const auto& b) {
    return a.bytesKnown < b.bytesKnown;
  });
  if (most == progress.end() || most->bytesKnown == 0) return {};
  const std::string total = most->bytesTotal > 0 ? std::to_string(most->bytesTotal) : "?";
  return ", " + std::to_string(most->bytesKnown) + " of " + total + " bytes from " + textOf(most->sender);
}

Json progressJson(const receiver::DecoderProgress& progress) {
  Json senders = Json::array();
  for (const receiver::SenderProgress& sender : progress) {
    senders.push_back({{"sender", textOf(sender.sender)},
                       {"version", static_cast<int>(sender.encoding)},
                       {"bytes_known", sender.bytesKnown},
                       {"bytes_total", sender.bytesTotal}});
  }
  return senders;
}

}  // namespace

void ModuleView::show(const receiver::ModuleEvent& event) {
  // These come too often to end the time in which requests are summed up.
  const bool isFrequent = std::holds_alternative<receiver::FramesHeard>(event) ||
                          std::holds_alternative<receiver::InfoRequested>(event);
  if (!isFrequent) sumUpRequests();
  std::visit([this](const auto& kind) { showKind(kind); }, event);
}

void ModuleView::showKind(const receiver::ModuleStarted&) {
  output_.report("module on " + printable(interface_) + ", Ctrl-C ends",
                 {{"event", "module_started"}, {"interface", jsonText(interface_)}});
}

void ModuleView::showKind(const receiver::FramesHeard& event) {
  output_.reportJson(
      {{"event", "frames"}, {"frames", event.frames}, {"senders", progressJson(event.progress)}});
  const std::string text = std::to_string(event.frames) + " frames heard" + progressText(event.progress);
  output_.showLive(text);
  const auto now = std::chrono::steady_clock::now();
  if (output_.isLive() || now < nextFramesLine_) return;
  nextFramesLine_ = now + kFramesLineEvery;
  output_.reportText(text);
}

void ModuleView::showKind(const receiver::CredentialsDecoded& event) {
  const receiver::Credentials& decoded = event.credentials;
  const int version = static_cast<int>(decoded.encoding);
  const std::string text = event.accepted ? "decoded and joining: " : "decoded, but not its network: ";
  const bool isHidden = !showSecrets_ && !decoded.passPhrase.empty();
  const std::string passPhrase = isHidden ? "hidden" : '"' + printable(decoded.passPhrase) + '"';
  output_.report(text + "SSID \"" + printable(decoded.ssid) + "\", pass phrase " + passPhrase +
                     ", append bytes " + (decoded.append.empty() ? "none" : toHex(decoded.append)) +
                     ", version " + std::to_string(version) + " from " + textOf(decoded.sender),
                 {{"event", event.accepted ? "decoded" : "refused"},
                  {"ssid", jsonText(decoded.ssid)},
                  {"pass_phrase", isHidden ? Json() : jsonText(decoded.passPhrase)},
                  {"append", toHex(decoded.append)},
                  {"version", version},
                  {"sender", textOf(decoded.sender)},
                  {"frames", event.frames}});
}

void ModuleView::showKind(const receiver::ModuleAnnounced& event) {
  output_.report("announced itself on UDP port " + std::to_string(event.port) + ": " + printable(event.line),
                 {{"event", "announced"}, {"port", event.port}, {"line", jsonText(event.line)}});
}

void ModuleView::showKind(const receiver::InfoRequested& event) {
  ++requests_;
  requestFrom_ = event.from;
  if (std::chrono::steady_clock::now() >= nextRequestsLine_) sumUpRequests();
}

void ModuleView::sumUpRequests() {
  if (requests_ == 0) return;
  nextRequestsLine_ = std::chrono::steady_clock::now() + kRequestsLineEvery;
  const std::string many = std::to_string(requests_) + " more search requests, the last";
  output_.report((requests_ == 1 ? "search request" : many) + " from " + printable(requestFrom_),
                 {{"event", "info_request"}, {"from", jsonText(requestFrom_)}, {"requests", requests_}});
  requests_ = 0;
}

void ModuleView::showKind(const receiver::UpgradeRequested& event) {
  output_.report(event.result < 0 ? "refused an upgrade, ret=" + std::to_string(event.result)
                                  : "upgrading from " + printable(event.url),
                 {{"event", "upgrade_request"}, {"url", jsonText(event.url)}, {"ret", event.result}});
}

void ModuleView::showKind(const receiver::DownloadProgress& event) {
  output_.reportJson({{"event", "download_progress"}, {"percent", event.percent}});
  const std::string text = "downloading, " + std::to_string(event.percent) + " %";
  output_.showLive(text, event.percent / 100.0);
  if (event.percent == 0) nextPercent_ = 0;
  if (output_.isLive() || event.percent < nextPercent_) return;
  nextPercent_ = event.percent / kPercentLineEvery * kPercentLineEvery + kPercentLineEvery;
  output_.reportText(text);
}

void ModuleView::showKind(const receiver::DownloadDone& event) {
  output_.report("the file is whole" + (event.path.empty() ? std::string{} : ": " + printable(event.path)),
                 {{"event", "download_done"}, {"path", jsonText(event.path)}});
}

void ModuleView::showKind(const receiver::DownloadFailed& event) {
  output_.report(
      "download failed: " + printable(event.reason),
      {{"event", "download_failed"}, {"problem", jsonText(event.reason)}, {"status", event.status}});
}

void ModuleView::showKind(const receiver::SendFailed& event) {
  output_.report("could not send: " + printable(event.reason),
                 {{"event", "send_failed"}, {"problem", jsonText(event.reason)}});
}

}  // namespace zor::cli
