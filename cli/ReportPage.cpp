#include "cli/ReportPage.h"

#include <string_view>

#include "cli/CompletionText.h"
#include "cli/FramePicture.h"
#include "cli/ReportTemplate.h"
#include "cli/SenderText.h"

namespace zor::cli {
namespace {

using receiver::ChannelReport;
using receiver::LegReport;
using receiver::LoggedFrame;

/// `json` for a script element, which only "<" can end.
std::string scriptText(const Json& json) {
  std::string text;
  for (const char c : jsonLine(json)) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

/// [number, seconds, role, news, offset], with secrets also destination and length.
Json frameJson(const LoggedFrame& frame, bool showSecrets) {
  Json json = {frame.number, toSeconds(frame.timeMicroseconds), static_cast<int>(frame.role),
               static_cast<int>(frame.news), frame.offset};
  if (showSecrets) {
    json.push_back(receiver::textOf(frame.destination));
    json.push_back(frame.length);
  }
  return json;
}

/// When each byte was first shown, and [milliseconds, count] of the gaps between frames.
Json channelJson(const ChannelReport& channel, std::int64_t start) {
  Json known = Json::array();
  for (std::size_t i = 0; i < channel.heardAt.size(); ++i) {
    constexpr std::int64_t kMicrosecondsPerMs = 1000;
    const std::int64_t ms = (channel.heardAt[i] - start + kMicrosecondsPerMs / 2) / kMicrosecondsPerMs;
    known.push_back(channel.heard[i] ? Json(static_cast<double>(ms) / 1e3) : Json());
  }
  Json gaps = Json::array();
  for (std::size_t ms = 0; ms < channel.gaps.size(); ++ms) {
    if (channel.gaps[ms] > 0) gaps.push_back({ms, channel.gaps[ms]});
  }
  return {{"known_at", known}, {"gaps", gaps}};
}

Json legPicture(const LegReport& leg, const Decoded& decoded) {
  Json frames = Json::array();
  const auto shown = pictureFrames(leg, decoded.start, decoded.showSecrets);
  for (const LoggedFrame& frame : shown) frames.push_back(frameJson(frame, decoded.showSecrets));
  Json rows = Json::array();
  for (std::size_t role = 0; role < kRoleNames.size(); ++role) {
    if (isRowShown(static_cast<receiver::FrameRole>(role), countRoles(shown))) rows.push_back(role);
  }
  Json channels = Json::array();
  for (const ChannelReport& channel : leg.channels) {
    if (channel.frames > 0) channels.push_back(channelJson(channel, decoded.start));
  }
  const PictureRange range = pictureRange(leg, decoded.start);
  return {{"text", legText(leg.leg)},  {"from", toSeconds(range.from)},
          {"to", toSeconds(range.to)}, {"rows", rows},
          {"frames", frames},          {"left_out", leg.leftOut},
          {"channels", channels}};
}

Json pageData(const Decoded& decoded) {
  Json completed = Json::array();
  Json pictures = Json::array();
  for (const receiver::SenderReport& sender : decoded.report.senders) {
    const std::string address = addressText(sender.address, sender.addressIsIpv4);
    for (const receiver::Completion& completion : sender.completions)
      completed.push_back(describe(completion, address, decoded.start, decoded.showSecrets).event);
    Json legs = Json::array();
    for (const LegReport& leg : sender.legs) legs.push_back(legPicture(leg, decoded));
    pictures.push_back(legs);
  }
  return {{"started", decoded.started},   {"completed", completed}, {"senders", decoded.senders},
          {"finished", decoded.finished}, {"roles", kRoleNames},    {"news", kNewsNames},
          {"pictures", pictures}};
}

}  // namespace

std::string reportPage(const Decoded& decoded) {
  std::string page = kReportTemplate;
  page.replace(page.find(kReportData), std::string_view(kReportData).size(), scriptText(pageData(decoded)));
  return page;
}

}  // namespace zor::cli
