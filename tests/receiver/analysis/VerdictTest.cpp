#include "receiver/analysis/Verdict.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "receiver/analysis/Analysis.h"
#include "receiver/capture/CaptureReader.h"

namespace zor::receiver {

void PrintTo(FindingKind kind, std::ostream* out) {
  *out << nameOf(kind);
}

namespace {

constexpr KnownPace kPaces[] = {
    {"default", 30, 100, 15, 100}, {"fast", 3, 60, 15, 100}, {"brief", 3, 100, 15, 100}};
constexpr MacAddress kPhone = {2, 0, 0, 0, 0, 1};

struct Read {
  CaptureReport report;
  std::string problem;
};

/// A file of tests/captures, of which the script `make` in the same folder says how it was made.
Read readCapture(const std::string& name, std::size_t framesKept = 0) {
  CaptureReader reader;
  EXPECT_EQ(reader.openFile(CAPTURES + name), "");
  Analysis analysis(framesKept);
  CaptureReader::Status status = CaptureReader::Status::more;
  while (status == CaptureReader::Status::more)
    status = reader.read([&](const CapturedFrame& frame) { analysis.observe(frame); });
  return {analysis.report(), reader.problem()};
}

std::vector<FindingKind> kindsOf(const SenderReport& sender) {
  std::vector<FindingKind> kinds;
  for (const Finding& finding : judge(sender, kPaces)) kinds.push_back(finding.kind);
  return kinds;
}

TEST(Verdict, IsTheSameInEveryFormat) {
  const struct {
    const char* file;
    std::int32_t syncLength;  // 30, IPv4 and UDP, LLC, cipher.
    const char* cipher;
    std::size_t frames = 87;
  } kCases[] = {
      {"ethernet.pcap", 30 + 28, "none"},  {"ethernet.pcapng", 30 + 28, "none"},
      {"cooked1.pcap", 30 + 28, "none"},   {"cooked2.pcap", 30 + 28, "none"},
      {"raw.pcap", 30 + 28, "none"},       {"wifi.pcap", 30 + 36 + 16, "CCMP-128"},
      {"wifi-open.pcap", 30 + 36, "none"}, {"radiotap.pcap", 30 + 36 + 16, "CCMP-128"},
      {"ppi.pcap", 30 + 36 + 20, "TKIP"},  {"cut.pcap", 30 + 28, "none", 86},
  };
  for (const auto& [file, syncLength, cipher, frames] : kCases) {
    SCOPED_TRACE(file);
    const auto [report, problem] = readCapture(file);
    EXPECT_EQ(problem.find("truncated") != std::string::npos, frames < 87) << problem;
    EXPECT_EQ(report.frames, frames);
    ASSERT_EQ(report.senders.size(), 1u);
    const SenderReport& sender = report.senders[0];
    EXPECT_EQ(sender.addressIsIpv4, std::string(file) == "raw.pcap");
    const MacAddress address = sender.addressIsIpv4 ? MacAddress{0, 0, 10, 77, 0, 1} : kPhone;
    EXPECT_EQ(sender.address, address);
    EXPECT_EQ(kindsOf(sender), std::vector{FindingKind::complete});
    ASSERT_EQ(sender.completions.size(), 1u);
    EXPECT_EQ(sender.completions[0].credentials.ssid, "Home");
    EXPECT_EQ(sender.completions[0].credentials.passPhrase, "secret!!");
    EXPECT_EQ(sender.completions[0].frame, 25u);
    const LegReport& leg = mainLeg(sender);
    EXPECT_EQ(leg.frames, frames);
    EXPECT_EQ(leg.bytesTotal, 16);
    EXPECT_EQ(fittingPace(leg, kPaces), "default");
    for (const ChannelKind kind : {ChannelKind::multicast, ChannelKind::broadcast}) {
      const ChannelReport& channel = leg.channel(kind);
      EXPECT_EQ(channel.syncLength, syncLength);
      EXPECT_EQ(channel.heard.count(), 16u);
      EXPECT_EQ(channel.loss, 0);
      EXPECT_EQ(channel.cycles, kind == ChannelKind::multicast ? 3u : 2u);
      EXPECT_EQ(channel.pauseMs, 100);
      ASSERT_TRUE(channel.syncLength && fittingCipher(leg, *channel.syncLength, kUsualBase));
      EXPECT_STREQ(fittingCipher(leg, *channel.syncLength, kUsualBase)->name, cipher);
    }
  }
}

TEST(Verdict, NamesTheCause) {
  using enum FindingKind;
  const struct {
    const char* file;
    std::vector<FindingKind> findings;
    const char* says;
  } kCases[] = {
      {"both-legs.pcap", {complete}, "complete 0.2 s after its first frame"},
      {"mixed.pcap", {complete}, "version 5"},
      {"fast.pcap", {complete}, "complete"},
      {"brief.pcap", {complete, broadcastMissing}, "its broadcast length base is 0"},
      {"held.pcap", {complete, heldInBursts}, "hold"},
      {"only-v3.pcap", {complete, onlyVersion3}, "only version 3"},
      {"no-multicast.pcap", {complete, multicastMissing}, "the phone sends none"},
      {"no-broadcast.pcap", {complete, broadcastMissing}, "the phone sends none"},
      {"access-point-filters.pcap", {complete, multicastMissing}, "does not repeat them"},
      {"no-syncs.pcap", {syncNeverSeen, multicastMissing}, "no sync frame among 102 frames"},
      {"sparse.pcap", {tooSparse}, "% are missing"},
      {"short.pcap", {tooShort}, "too short"},
      {"overhead-changes.pcap", {lengthsChanged}, "moved by 4 bytes after 0.4 s"},
      {"two-senders.pcap", {crcNeverHolds}, "two senders share one address"},
      {"base-zero.pcap", {complete, lengthBaseZero}, "length base is 0"},
      {"unknown-pace.pcap", {complete, paceUnknown}, "multicasts every 50 ms, broadcasts every 40 ms"},
  };
  for (const auto& [file, findings, says] : kCases) {
    SCOPED_TRACE(file);
    const auto [report, problem] = readCapture(file);
    EXPECT_EQ(problem, "");
    ASSERT_EQ(report.senders.size(), 1u);
    EXPECT_EQ(report.senders[0].address, kPhone);
    EXPECT_EQ(kindsOf(report.senders[0]), findings);
    std::string text;
    for (const Finding& finding : judge(report.senders[0], kPaces)) text += finding.text + "\n";
    EXPECT_NE(text.find(says), std::string::npos) << text;
  }
}

TEST(Verdict, KnowsThePaceOfVersion3) {
  SenderReport sender = readCapture("only-v3.pcap").report.senders.at(0);
  LegReport& leg = sender.legs.at(0);
  EXPECT_EQ(fittingPace(leg, kPaces), kVersion3Pace);
  leg.channels[static_cast<std::size_t>(ChannelKind::version3)].intervalMs = 30;
  EXPECT_EQ(fittingPace(leg, kPaces), std::nullopt);
  EXPECT_EQ(judge(sender, kPaces).back().text,
            "the spacing is none of the known paces: version 3 every 30 ms instead of 10 ms");
}

TEST(Verdict, SaysWhatWasThereInstead) {
  const struct {
    const char *file, *says;
  } kCases[] = {{"nothing.pcap", "among 200 frames: 109 broadcasts, 91 other multicasts"},
                {"aggregated.pcap", "among 87 frames: 87 aggregates"}};
  for (const auto& [file, says] : kCases) {
    const CaptureReport report = readCapture(file).report;
    EXPECT_TRUE(report.senders.empty()) << file;
    const Finding finding = judgeEmpty(report);
    EXPECT_EQ(finding.kind, FindingKind::nothing);
    EXPECT_NE(finding.text.find(says), std::string::npos) << finding.text;
  }
}

TEST(Verdict, CopiesAreNoSecondPhoneAndRetriesNoFrames) {
  const SenderReport sender = readCapture("both-legs.pcap").report.senders.at(0);
  ASSERT_EQ(sender.legs.size(), 2u);
  EXPECT_EQ(sender.legs[0].leg, Leg::toAccessPoint);
  EXPECT_EQ(sender.legs[0].retries + sender.legs[0].frames, 143u);
  EXPECT_GT(sender.legs[0].retries, 10u);
  EXPECT_EQ(sender.legs[1].leg, Leg::fromAccessPoint);
  EXPECT_EQ(sender.legs[1].frames, 124u);

  const CaptureReport two = readCapture("two-phones.pcap").report;
  ASSERT_EQ(two.senders.size(), 2u);
  EXPECT_EQ(two.senders[1].completions.at(0).credentials.ssid, "Neighbour");
}

TEST(Verdict, LossIsThatOfTheCapture) {
  const LegReport leg = mainLeg(readCapture("sparse.pcap").report.senders.at(0));
  EXPECT_NEAR(leg.channel(ChannelKind::multicast).loss.value(), 0.8, 0.15);
  EXPECT_EQ(leg.crc, Crc::unknown);
  EXPECT_LT(leg.bytesKnown, leg.bytesTotal);
}

/// For pictures: what each frame was sent for, what it said that was not known, and when.
TEST(Verdict, KeepsTheFirstFramesWithTheirMeaning) {
  using enum FrameRole;
  using enum News;
  const LegReport leg = mainLeg(readCapture("ethernet.pcap", 50).report.senders.at(0));
  ASSERT_EQ(leg.log.size(), 50u);
  EXPECT_EQ(leg.leftOut, 37u);
  const struct {
    FrameRole role;
    News news;
    int offset, length;
  } kFirst[] = {{multicastSync, none, -1, 58}, {broadcastSync, none, -1, 58}, {broadcastSync, none, -1, 416},
                {broadcastSync, none, -1, 59}, {multicastData, fresh, 0, 58}, {value, fresh, 0, 176},
                {position, fresh, 0, 60},      {multicastData, fresh, 2, 59}};
  for (std::size_t i = 0; i < std::size(kFirst); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(leg.log[i].number, i + 1);
    EXPECT_EQ(leg.log[i].role, kFirst[i].role);
    EXPECT_EQ(leg.log[i].news, kFirst[i].news);
    EXPECT_EQ(leg.log[i].offset, kFirst[i].offset);
    EXPECT_EQ(leg.log[i].length, kFirst[i].length);
  }
  const ChannelReport& groups = leg.channel(ChannelKind::multicast);
  EXPECT_EQ(groups.heardAt[2], leg.log[7].timeMicroseconds);
  EXPECT_EQ(std::accumulate(groups.gaps.begin(), groups.gaps.end(), 0U), groups.frames - 1);
  EXPECT_GT(groups.gaps.at(30), groups.frames / 2);

  // A later sync frame explains earlier ones; a second sender contradicts the first.
  const auto has = [](const char* file, FrameRole role, News news) {
    const LegReport heard = mainLeg(readCapture(file, 1000).report.senders.at(0));
    return std::ranges::any_of(
        heard.log, [&](const LoggedFrame& frame) { return frame.role == role && frame.news == news; });
  };
  EXPECT_TRUE(has("sparse.pcap", multicastData, fresh));
  EXPECT_TRUE(has("two-senders.pcap", position, contradicting) && has("two-senders.pcap", value, repeated));
  EXPECT_TRUE(has("no-syncs.pcap", other, none) && !has("no-syncs.pcap", value, none));
}

bool isBroadcast(const CapturedFrame& frame) {
  return frame.destination[0] == 0xff;
}

/// What an air would show that no file holds: each frame is changed, or left out.
TEST(Verdict, NamesTheCauseInChangedCaptures) {
  using enum FindingKind;
  const auto convert = [](CapturedFrame& frame) {
    if (frame.leg == Leg::fromAccessPoint && !isBroadcast(frame)) frame.destination = {2, 0, 0, 0, 0, 7};
  };
  const struct {
    const char* file;
    std::function<bool(CapturedFrame&)> change;  // Returns false for a frame to leave out.
    FindingKind finding;
    const char* says;
  } kCases[] = {
      {"both-legs.pcap", [&](CapturedFrame& frame) { return convert(frame), true; }, multicastMissing,
       "does not repeat them: it converts multicasts to unicasts, of which 3"},
      {"both-legs.pcap",
       [&](CapturedFrame& frame) { return convert(frame), frame.leg == Leg::fromAccessPoint; },
       multicastMissing, "the access point converts multicasts to unicasts, of which 3"},
      {"both-legs.pcap",
       [](CapturedFrame& frame) { return frame.leg == Leg::fromAccessPoint && !isBroadcast(frame); },
       broadcastMissing, "the access point filters broadcasts, or the phone sends none"},
      {"ethernet.pcap",
       [heard = 0](CapturedFrame& frame) mutable {
         if (++heard > 50) frame.length += 4;
         return isBroadcast(frame);
       },
       lengthsChanged, "moved by 4 bytes"},
      {"both-legs.pcap",
       [heard = 0](CapturedFrame& frame) mutable {
         return frame.leg == Leg::fromAccessPoint || ++heard % 4 == 0;
       },
       complete, "complete"},
      {"ethernet.pcap",
       [](CapturedFrame& frame) {
         if (frame.length == 58 + 6) frame.destination[5] ^= 1U;
         return !isBroadcast(frame);
       },
       crcNeverHolds, "the sender's packet is damaged"},
  };
  for (const auto& [file, change, finding, says] : kCases) {
    CaptureReader reader;
    ASSERT_EQ(reader.openFile(CAPTURES + std::string(file)), "");
    Analysis analysis;
    const auto hear = [&](CapturedFrame frame) {
      if (change(frame)) analysis.observe(frame);
    };
    while (reader.read(hear) == CaptureReader::Status::more) continue;
    const SenderReport sender = analysis.report().senders.at(0);
    const std::vector<Finding> findings = judge(sender, kPaces);
    const auto found = std::ranges::find(findings, finding, &Finding::kind);
    ASSERT_NE(found, findings.end()) << says;
    EXPECT_NE(found->text.find(says), std::string::npos) << found->text;
  }
}

/// 100 senders, each of one broadcast, do not push out the phone; memory is fixed by type.
TEST(Verdict, StrangersDoNotPushOutAPhone) {
  CaptureReader reader;
  ASSERT_EQ(reader.openFile(CAPTURES "radiotap.pcap"), "");
  Analysis analysis;
  std::uint32_t stranger = 0;
  const auto hear = [&](const CapturedFrame& frame) {
    analysis.observe(frame);
    for (int i = 0; i < 100; ++i, ++stranger) {
      CapturedFrame other = frame;
      other.destination.fill(0xff);
      other.length = 200;
      other.source = {
          4, 0, 0, 0, static_cast<std::uint8_t>(stranger >> 8), static_cast<std::uint8_t>(stranger)};
      analysis.observe(other);
    }
  };
  while (reader.read(hear) == CaptureReader::Status::more) continue;
  const CaptureReport report = analysis.report();
  ASSERT_EQ(report.senders.size(), 1u);
  EXPECT_EQ(mainLeg(report.senders[0]).frames, 87u);
}

}  // namespace
}  // namespace zor::receiver
