#include "cli/ModuleView.h"

#include <algorithm>

#include "cli/Escape.h"
#include "cli/Hex.h"
#include "cli/ProgressBar.h"
#include "receiver/NetworkInterface.h"

namespace zor::cli {
namespace {

using receiver::ModuleEvent;
using receiver::textOf;

/// How often what is a live line on a terminal is printed elsewhere.
constexpr std::chrono::seconds kFramesLineEvery{2};
constexpr int kPercentLineEvery = 25;

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

void ModuleView::show(const ModuleEvent& event) {
  const std::string text = printable(event.text);
  const std::string json = codePoints(event.text);
  switch (event.kind) {
    case ModuleEvent::Kind::started:
      return output_.report("module on " + printable(interface_) + ", Ctrl-C ends",
                            {{"event", "module_started"}, {"interface", codePoints(interface_)}});
    case ModuleEvent::Kind::frames:
      return showFrames(event);
    case ModuleEvent::Kind::decoded:
      return showCredentials(event, "decoded", "decoded and joining: ");
    case ModuleEvent::Kind::refused:
      return showCredentials(event, "refused", "decoded, but not its network: ");
    case ModuleEvent::Kind::announced:
      return output_.report("announced itself on UDP port " + std::to_string(event.port) + ": " + text,
                            {{"event", "announced"}, {"port", event.port}, {"line", json}});
    case ModuleEvent::Kind::infoRequest:
      return output_.report("search request from " + text, {{"event", "info_request"}, {"from", json}});
    case ModuleEvent::Kind::upgradeRequest:
      return output_.report(event.result < 0 ? "refused an upgrade, ret=" + std::to_string(event.result)
                                             : "upgrading from " + text,
                            {{"event", "upgrade_request"}, {"url", json}, {"ret", event.result}});
    case ModuleEvent::Kind::downloadProgress:
      return showDownload(event);
    case ModuleEvent::Kind::downloadDone:
      return output_.report("the file is whole" + (text.empty() ? text : ": " + text),
                            {{"event", "download_done"}, {"path", json}});
    case ModuleEvent::Kind::downloadFailed:
      return output_.report("download failed: " + text,
                            {{"event", "download_failed"}, {"problem", json}, {"status", event.result}});
    case ModuleEvent::Kind::sendFailed:
      return output_.report("could not send: " + text, {{"event", "send_failed"}, {"problem", json}});
  }
}

void ModuleView::showFrames(const ModuleEvent& event) {
  output_.reportJson(
      {{"event", "frames"}, {"frames", event.frames}, {"senders", progressJson(event.progress)}});
  const std::string text = std::to_string(event.frames) + " frames heard" + progressText(event.progress);
  output_.showLive(text);
  const auto now = std::chrono::steady_clock::now();
  if (output_.isLive() || now < nextFramesLine_) return;
  nextFramesLine_ = now + kFramesLineEvery;
  output_.reportText(text);
}

void ModuleView::showCredentials(const ModuleEvent& event, const char* name, const char* text) {
  if (!event.credentials) return;
  const receiver::Credentials& told = *event.credentials;
  const int version = static_cast<int>(told.encoding);
  output_.report(text + ("SSID \"" + printable(told.ssid)) + "\", pass phrase \"" +
                     printable(told.passPhrase) + "\", append bytes " +
                     (told.append.empty() ? "none" : toHex(told.append)) + ", version " +
                     std::to_string(version) + " from " + textOf(told.sender),
                 {{"event", name},
                  {"ssid", codePoints(told.ssid)},
                  {"pass_phrase", codePoints(told.passPhrase)},
                  {"append", toHex(told.append)},
                  {"version", version},
                  {"sender", textOf(told.sender)},
                  {"frames", event.frames}});
}

void ModuleView::showDownload(const ModuleEvent& event) {
  output_.reportJson({{"event", "download_progress"}, {"percent", event.percent}});
  output_.showLive(progressBar(event.percent) + "  downloading");
  if (event.percent == 0) nextPercent_ = 0;
  if (output_.isLive() || event.percent < nextPercent_) return;
  nextPercent_ = event.percent / kPercentLineEvery * kPercentLineEvery + kPercentLineEvery;
  output_.reportText("downloading, " + std::to_string(event.percent) + " %");
}

}  // namespace zor::cli
