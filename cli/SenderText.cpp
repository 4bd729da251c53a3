#include "cli/SenderText.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "cli/KnownPaces.h"
#include "receiver/analysis/Verdict.h"

namespace zor::cli {
namespace {

using receiver::ChannelKind;
using receiver::ChannelReport;
using receiver::LegReport;

struct ChannelName {
  const char* text;
  const char* json;
};
constexpr std::array<ChannelName, receiver::kChannelKinds> kChannelNames = {
    {{"multicast", "multicast"}, {"broadcast", "broadcast"}, {"version 3", "version3"}}};

std::string number(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.4g", value);
  return text.data();
}

/// One character per packet byte: heard or not.
std::string byteMap(const ChannelReport& channel, int bytesTotal) {
  auto end = static_cast<std::size_t>(bytesTotal);
  for (std::size_t i = end; i < channel.heard.size(); ++i) {
    if (bytesTotal == 0 && channel.heard[i]) end = i + 1;
  }
  std::string map;
  for (std::size_t i = 0; i < end; ++i) map += channel.heard[i] ? '#' : '.';
  return map;
}

/// What the length of the sync frames is made of.
std::string baseText(const LegReport& leg, std::int32_t syncLength) {
  const int overhead = syncLength - receiver::kUsualBase;
  const auto cipher = receiver::fittingCipher(leg, syncLength, receiver::kUsualBase);
  const std::string lengths = "syncs of " + std::to_string(syncLength) + " bytes";
  if (cipher) {
    const std::string base = std::to_string(receiver::kUsualBase) + (leg.isProtected ? " assumed" : "");
    return lengths + ": base " + base + ", overhead " + std::to_string(overhead) + ", encryption " +
           cipher->name;
  }
  if (leg.isProtected) return lengths + ": base and encryption are not the usual ones";
  return lengths + ": base " + std::to_string(syncLength - leg.headerBytes) + ", overhead " +
         std::to_string(leg.headerBytes) + ", encryption none";
}

std::string channelLines(const LegReport& leg, std::size_t kind) {
  const ChannelReport& channel = leg.channels[kind];
  std::string line = std::string("    ") + kChannelNames[kind].text;
  line.resize(16, ' ');
  const std::string indent(16, ' ');
  line += std::to_string(channel.frames) + " frames, " + std::to_string(channel.cycles) +
          (channel.cycles == 1 ? " cycle" : " cycles");
  if (channel.loss) line += ", " + std::to_string(std::lround(*channel.loss * 100)) + " % lost";
  if (channel.inBursts) {
    line += ", in bursts";
  } else if (channel.intervalMs) {
    line += ", every " + number(*channel.intervalMs) + " ms";
    if (channel.pauseMs) line += ", pause " + number(*channel.pauseMs) + " ms";
  }
  if (channel.contradictions > 0) line += ", " + std::to_string(channel.contradictions) + " contradictions";
  line += "\n" + indent + (channel.syncLength ? baseText(leg, *channel.syncLength) : "no sync frame");
  const bool isOfPacket = (kind == static_cast<std::size_t>(ChannelKind::version3)) ==
                          (leg.channel(ChannelKind::multicast).frames == 0);
  const std::string map = byteMap(channel, isOfPacket ? leg.bytesTotal : 0);
  if (channel.heard.any()) line += "\n" + indent + "bytes " + map;
  return line;
}

const char* crcName(receiver::Crc crc) {
  switch (crc) {
    case receiver::Crc::holds:
      return "holds";
    case receiver::Crc::wrong:
      return "wrong";
    default:
      return "unknown";
  }
}

template <class Value>
Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

double rounded(double value) {
  return std::round(value * 1000) / 1000;
}

Json channelJson(const LegReport& leg, std::size_t kind) {
  const ChannelReport& channel = leg.channels[kind];
  Json json = {{"channel", kChannelNames[kind].json},
               {"frames", channel.frames},
               {"syncs", channel.syncs},
               {"cycles", channel.cycles},
               {"sync_length", orNull(channel.syncLength)}};
  const auto cipher = channel.syncLength
                          ? receiver::fittingCipher(leg, *channel.syncLength, receiver::kUsualBase)
                          : std::nullopt;
  const bool isBaseKnown = channel.syncLength && (cipher || !leg.isProtected);
  const int base = cipher ? receiver::kUsualBase : channel.syncLength.value_or(0) - leg.headerBytes;
  json["length_base"] = isBaseKnown ? Json(base) : Json();
  json["length_base_assumed"] = isBaseKnown && leg.isProtected;
  json["overhead"] = isBaseKnown ? Json(*channel.syncLength - base) : Json();
  json["encryption"] = cipher ? Json(cipher->name) : isBaseKnown ? Json("none") : Json();
  json["heard"] = byteMap(channel, 0);
  json["contradictions"] = channel.contradictions;
  json["loss"] = channel.loss ? Json(rounded(*channel.loss)) : Json();
  json["interval_ms"] = orNull(channel.intervalMs);
  json["pause_ms"] = orNull(channel.pauseMs);
  json["in_bursts"] = channel.inBursts;
  return json;
}

}  // namespace

const char* legText(receiver::Leg leg) {
  switch (leg) {
    case receiver::Leg::local:
      return "on the wire";
    case receiver::Leg::outgoing:
      return "sent by this computer";
    case receiver::Leg::toAccessPoint:
      return "from the phone to the access point";
    case receiver::Leg::fromAccessPoint:
      return "repeated by the access point";
    case receiver::Leg::betweenAccessPoints:
      return "between access points";
    case receiver::Leg::direct:
      return "without an access point";
  }
  return "";
}

const char* legName(receiver::Leg leg) {
  switch (leg) {
    case receiver::Leg::local:
      return "local";
    case receiver::Leg::outgoing:
      return "outgoing";
    case receiver::Leg::toAccessPoint:
      return "to_access_point";
    case receiver::Leg::fromAccessPoint:
      return "from_access_point";
    case receiver::Leg::betweenAccessPoints:
      return "between_access_points";
    case receiver::Leg::direct:
      return "direct";
  }
  return "";
}

std::string addressText(const receiver::MacAddress& address, bool isIpv4) {
  if (!isIpv4) return receiver::textOf(address);
  std::string text;
  for (std::size_t i = 2; i < address.size(); ++i) text += (i > 2 ? "." : "") + std::to_string(address[i]);
  return text;
}

std::string legLines(const LegReport& leg) {
  const double seconds = static_cast<double>(leg.lastMicroseconds - leg.firstMicroseconds) / 1e6;
  std::string lines = std::string("  ") + legText(leg.leg) + ": " + std::to_string(leg.frames) +
                      " frames in " + number(seconds) + " s";
  if (leg.retries > 0) lines += ", " + std::to_string(leg.retries) + " retries not counted";
  lines += ", " + std::to_string(leg.bytesKnown) + " of " +
           (leg.bytesTotal > 0 ? std::to_string(leg.bytesTotal) : "?") + " bytes, CRC " + crcName(leg.crc);
  if (const auto pace = receiver::fittingPace(leg, knownPaces())) lines += ", pace " + std::string(*pace);
  for (std::size_t kind = 0; kind < leg.channels.size(); ++kind) {
    if (leg.channels[kind].frames > 0) lines += "\n" + channelLines(leg, kind);
  }
  return lines;
}

Json legJson(const LegReport& leg) {
  const auto pace = receiver::fittingPace(leg, knownPaces());
  Json channels = Json::array();
  for (std::size_t kind = 0; kind < leg.channels.size(); ++kind) {
    if (leg.channels[kind].frames > 0) channels.push_back(channelJson(leg, kind));
  }
  return {{"leg", legName(leg.leg)},
          {"frames", leg.frames},
          {"retries", leg.retries},
          {"protected", leg.isProtected},
          {"seconds", static_cast<double>(leg.lastMicroseconds - leg.firstMicroseconds) / 1e6},
          {"bytes_known", leg.bytesKnown},
          {"bytes_total", leg.bytesTotal},
          {"crc", crcName(leg.crc)},
          {"pace", pace ? Json(*pace) : Json()},
          {"channels", channels}};
}

}  // namespace zor::cli
