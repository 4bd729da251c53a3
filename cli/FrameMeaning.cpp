#include "cli/FrameMeaning.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>
#include <cstdio>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "cli/Hex.h"

namespace zor::cli {
namespace {

// The second octets of groups.
constexpr int kSyncOctet = 122;
constexpr int kEvenOctet = 111;
constexpr int kOddOctet = 114;
constexpr int kMarkerOctet = 90;

constexpr std::int32_t kFirstLengthVersion3 = 31;

// Lengths of broadcasts above the channel's length base.
constexpr std::int32_t kSync2 = 358;
constexpr std::int32_t kSync3 = 1;
constexpr std::int32_t kFirstPosition = 2;
constexpr std::int32_t kFirstValue = 102;

using Octets = std::array<std::uint8_t, 4>;

Octets octetsOf(const std::string& address) {
  in_addr parsed{};
  inet_pton(AF_INET, address.c_str(), &parsed);
  const std::uint32_t bits = ntohl(parsed.s_addr);
  return {static_cast<std::uint8_t>(bits >> 24), static_cast<std::uint8_t>(bits >> 16),
          static_cast<std::uint8_t>(bits >> 8), static_cast<std::uint8_t>(bits)};
}

FrameMeaning named(const std::string& kind) {
  return {kind, {{"kind", kind}}};
}

/// "4, 5: 68 6f" for two bytes, "18: 61" for one.
FrameMeaning dataMeaning(std::size_t offset, const std::vector<std::uint8_t>& bytes) {
  std::string offsets;
  std::string values;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0) offsets += ", ";
    offsets += std::to_string(offset + i);
    values += ' ';
    values += toHex({bytes[i]});
  }
  return {offsets + ":" + values, {{"kind", "data"}, {"offset", offset}, {"bytes", toHex(bytes)}}};
}

}  // namespace

FrameMeaning multicastMeaning(const simulator::ScheduledFrame& frame, std::size_t packetLength) {
  const Octets group = octetsOf(frame.destination);
  if (group[1] == kSyncOctet) return named("sync");
  if (group[1] == kMarkerOctet) return named("marker");
  const bool isVersion5 = group[1] == kEvenOctet || group[1] == kOddOctet;
  const std::int32_t base = isVersion5 ? std::int32_t{s_ZorSmart5_McLen} : kFirstLengthVersion3;
  const auto offset = static_cast<std::size_t>(2 * (frame.length - base));
  std::vector<std::uint8_t> bytes = {group[2]};
  if (offset + 1 < packetLength) bytes.push_back(group[3]);
  return dataMeaning(offset, bytes);
}

FrameMeaning broadcastMeaning(const simulator::ScheduledFrame& frame) {
  const std::int32_t added = frame.length - s_ZorSmart5_BcLen;
  if (added == 0) return named("sync 1");
  if (added == kSync2) return named("sync 2");
  if (added == kSync3) return named("sync 3");
  if (added >= kFirstValue) {
    const auto value = static_cast<std::uint8_t>(added - kFirstValue);
    return {"value " + toHex({value}), {{"kind", "value"}, {"bytes", toHex({value})}}};
  }
  const std::int32_t position = added - kFirstPosition;
  return {"position " + std::to_string(position), {{"kind", "position"}, {"offset", position}}};
}

std::string destinationSeen(const std::string& destination) {
  const Octets group = octetsOf(destination);
  if (!IN_MULTICAST(std::uint32_t{group[0]} << 24)) return "ff:ff:ff:ff:ff:ff";
  char text[sizeof "01:00:5e:00:00:00"];
  std::snprintf(text, sizeof text, "01:00:5e:%02x:%02x:%02x", group[1] & 0x7FU, group[2], group[3]);
  return text;
}

}  // namespace zor::cli
