#include "receiver/capture/LinkLayer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "receiver/capture/CaptureReader.h"
#include "receiver/capture/FrameSource.h"

namespace zor::receiver {
namespace {

using Frame = std::vector<std::uint8_t>;

constexpr MacAddress kGroup = {0x01, 0x00, 0x5e, 0x6f, 0x13, 0x65};
constexpr MacAddress kPhone = {0x02, 0, 0, 0, 0, 1};

Frame operator+(Frame first, const Frame& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const Frame kA1 = {0x01, 0x00, 0x5e, 0x6f, 0x13, 0x65};  // The group.
const Frame kA2 = {0x02, 0, 0, 0, 0, 1};                 // The phone.
const Frame kBssid = {0x02, 0, 0, 0, 0, 0xa9};
const Frame kSequence7 = {0x70, 0x00};

/// Frame control and duration.
Frame start(int first, int second) {
  return {static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second), 0, 0};
}

TEST(LinkLayer, Reads80211ByItsHeader) {
  using enum FrameKind;
  const struct {
    const char* what;
    Frame frame;
    FrameKind kind;
    Leg leg = Leg::local;
    std::int32_t length = 0;  // Of 100 bytes, what is after the header.
  } kCases[] = {
      {"to DS, QoS, retry", start(0x88, 0x49) + kBssid + kA2 + kA1 + kSequence7 + Frame{0, 0}, data,
       Leg::toAccessPoint, 74},
      {"to DS, QoS with HT control", start(0x88, 0xc1) + kBssid + kA2 + kA1 + kSequence7 + Frame{0, 0}, data,
       Leg::toAccessPoint, 70},
      {"from DS", start(0x08, 0x42) + kA1 + kBssid + kA2 + kSequence7, data, Leg::fromAccessPoint, 76},
      {"both, QoS", start(0x88, 0x03) + kBssid + kBssid + kA1 + kSequence7 + kA2 + Frame{0, 0}, data,
       Leg::betweenAccessPoints, 68},
      {"neither", start(0x08, 0x00) + kA1 + kA2 + kBssid + kSequence7, data, Leg::direct, 76},
      {"first fragment", start(0x08, 0x05) + kBssid + kA2 + kA1 + kSequence7, fragment, Leg::toAccessPoint},
      {"next fragment", start(0x08, 0x01) + kBssid + kA2 + kA1 + Frame{0x71, 0}, fragment,
       Leg::toAccessPoint},
      {"A-MSDU", start(0x88, 0x01) + kBssid + kA2 + kBssid + kSequence7 + Frame{0x80, 0}, aggregate,
       Leg::toAccessPoint},
      {"no data", start(0x48, 0x01) + kBssid + kA2 + kBssid + kSequence7, noContent, Leg::toAccessPoint},
      {"QoS, cut before its QoS field", start(0x88, 0x01) + kBssid + kA2 + kA1 + kSequence7, unreadable},
      {"cut in an address", start(0x08, 0x01) + kBssid + kA2 + Frame{1, 0}, unreadable},
      {"beacon", start(0x80, 0x00), management},
      {"acknowledgement", start(0xd4, 0x00), FrameKind::control},
      {"version 1", start(0x09, 0x01), unreadable},
      {"reserved type", start(0x0c, 0x00), unreadable},
      {"empty", {}, unreadable},
  };
  for (const auto& [what, bytes, kind, leg, length] : kCases) {
    SCOPED_TRACE(what);
    const CapturedFrame frame = readFrame(LinkLayer::wifi, bytes, 100);
    EXPECT_EQ(frame.kind, kind);
    if (kind == unreadable) continue;
    EXPECT_EQ(frame.leg, leg);
    if (kind != data) continue;
    EXPECT_EQ(frame.length, length);
    EXPECT_EQ(frame.destination, kGroup);
    EXPECT_EQ(frame.source, kPhone);
    EXPECT_EQ(frame.sequence, 7);
    EXPECT_EQ(frame.isRetry, bytes[1] == 0x49);
    EXPECT_EQ(frame.isProtected, (bytes[1] & 0x40) != 0);
  }
}

TEST(LinkLayer, TakesWhatStandsBefore80211) {
  const Frame wifi =
      start(0x88, 0x41) + kBssid + kA2 + kA1 + kSequence7 + Frame{0, 0};  // Then 74 of 100 bytes.
  const Frame noFields = {0, 0, 8, 0, 0, 0, 0, 0};
  const Frame flags = {0, 0, 9, 0, 2, 0, 0, 0};
  const Frame timeAndFlags = {0, 0, 25, 0, 3, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  const Frame ppi = {0, 0, 32, 0, 105, 0, 0, 0, 2, 0, 20, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Frame ppiRest(10, 0);
  const struct {
    const char* what;
    LinkLayer layer;
    Frame prefix;
    FrameKind kind;
    std::int32_t length = 0;
  } kCases[] = {
      {"radiotap", LinkLayer::wifiRadiotap, noFields, FrameKind::data, 74},
      {"with check sequence", LinkLayer::wifiRadiotap, flags + Frame{0x10}, FrameKind::data, 70},
      {"padded header", LinkLayer::wifiRadiotap, flags + Frame{0x20}, FrameKind::data, 72},
      {"damaged", LinkLayer::wifiRadiotap, flags + Frame{0x50}, FrameKind::damaged},
      {"flags after two words and the time", LinkLayer::wifiRadiotap, timeAndFlags + Frame{0x10},
       FrameKind::data, 70},
      {"words without end", LinkLayer::wifiRadiotap, {0, 0, 8, 0, 0, 0, 0, 0x80}, FrameKind::unreadable},
      {"flags beyond the header", LinkLayer::wifiRadiotap, {0, 0, 8, 0, 2, 0, 0, 0}, FrameKind::unreadable},
      {"longer than the frame", LinkLayer::wifiRadiotap, {0, 0, 255, 255, 0, 0, 0, 0}, FrameKind::unreadable},
      {"shorter than itself", LinkLayer::wifiRadiotap, {0, 0, 4, 0, 0, 0, 0, 0}, FrameKind::unreadable},
      {"PPI", LinkLayer::wifiPpi, ppi + Frame{0, 0} + ppiRest, FrameKind::data, 74},
      {"PPI with check sequence", LinkLayer::wifiPpi, ppi + Frame{1, 0} + ppiRest, FrameKind::data, 70},
      {"PPI, damaged", LinkLayer::wifiPpi, ppi + Frame{5, 0} + ppiRest, FrameKind::damaged},
      {"PPI of another link", LinkLayer::wifiPpi, {0, 0, 8, 0, 1, 0, 0, 0}, FrameKind::unreadable},
  };
  for (const auto& [what, layer, prefix, kind, length] : kCases) {
    SCOPED_TRACE(what);
    const auto total = static_cast<std::uint32_t>(prefix.size() + 100);
    const CapturedFrame frame = readFrame(layer, prefix + wifi, total);
    EXPECT_EQ(frame.kind, kind);
    if (kind == FrameKind::data) {
      EXPECT_EQ(frame.length, length);
      EXPECT_EQ(frame.destination, kGroup);
    }
    for (std::size_t kept = 0; kept < prefix.size(); ++kept) {
      const CapturedFrame cut =
          readFrame(layer, Frame(prefix.begin(), prefix.begin() + static_cast<long>(kept)), total);
      EXPECT_EQ(cut.kind, FrameKind::unreadable) << kept;
    }
  }
}

TEST(LinkLayer, SkipsAVlanTagAndMarksWhatThisComputerSent) {
  const Frame tagged = kA1 + kA2 + Frame{0x81, 0, 0, 5, 8, 0};
  EXPECT_EQ(readFrame(LinkLayer::ethernet, tagged, 100).length, 82);
  const Frame sent =
      Frame{0, 4, 0, 1, 0, 6} + kA2 + Frame{0, 0, 8, 0, 0x45} + Frame(15, 0) + Frame{239, 111, 19, 101};
  const CapturedFrame frame = readFrame(LinkLayer::linuxCooked1, sent, 100);
  EXPECT_EQ(frame.kind, FrameKind::data);
  EXPECT_EQ(frame.leg, Leg::outgoing);
  EXPECT_EQ(frame.destination, kGroup);
  EXPECT_EQ(frame.source, kPhone);
  EXPECT_EQ(frame.length, 84);
  const Frame toHost = Frame{0x45} + Frame(15, 0) + Frame{10, 77, 0, 1};
  EXPECT_EQ(readFrame(LinkLayer::rawIp, toHost, 100).destination, (MacAddress{0, 0, 10, 77, 0, 1}));
}

TEST(CaptureReader, SaysInOneLineWhatIsNoCapture) {
  const std::string head("\xd4\xc3\xb2\xa1\x02\x00\x04\x00\0\0\0\0\0\0\0\0\xff\xff\0\0", 20);
  const struct {
    std::string bytes;
    const char* says;
  } kCases[] = {{"", "truncated"},
                {"hello, this is no capture at all", "unknown file format"},
                {head + std::string("\xbb\0\0\0", 4), "link type BLUETOOTH_HCI_H4"},
                {head.substr(0, 10), "truncated"}};
  for (const auto& [bytes, says] : kCases) {
    std::FILE* const file = std::tmpfile();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    CaptureReader reader;
    const std::string problem = reader.openStream(file);
    EXPECT_NE(problem.find(says), std::string::npos) << problem;
    EXPECT_EQ(problem.find('\n'), std::string::npos);
  }
  EXPECT_EQ(CaptureReader().openFile("/no/such"), "No such file or directory");
}

TEST(FrameSource, SaysInOneLineWhyItCannotCapture) {
  const std::string problem = FrameSource().open("none0");
  EXPECT_TRUE(problem.starts_with("cannot capture on none0: ")) << problem;
  EXPECT_EQ(problem.find('\n'), std::string::npos);
}

}  // namespace
}  // namespace zor::receiver
