#include "receiver/decoder/PacketEvidence.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "receiver/decoder/Breaks.h"
#include "receiver/decoder/Crc8.h"

namespace zor::receiver {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// SSID "12345", pass phrase "6789": the CRC of the digits is 0x20.
const Bytes kPacket = {0x10, 0x20, 5, 4, '1', '2', '3', '4', '5', '6', '7', '8', '9'};
const int kEnd = static_cast<int>(kPacket.size());
constexpr Timetables kExplained = {Timetable::explained, Timetable::explained};

/// What is done to the evidence, and how long after the step before it.
struct Step {
  std::function<void(PacketEvidence&, Moment)> act;
  Moment after = 1'000;
};

Step after(Moment milliseconds, const Step& step) {
  return {step.act, milliseconds};
}

Step one(int piece, Source source, std::uint8_t flaw = 0) {
  return {[=](PacketEvidence& evidence, Moment now) {
    evidence.add(piece, kPacket[static_cast<std::size_t>(piece)] ^ flaw, {now, source});
  }};
}

Step all(Source source, int skipped = -1) {
  return {[=](PacketEvidence& evidence, Moment now) {
    for (int piece = 0; piece < kEnd; ++piece)
      if (piece != skipped) one(piece, source).act(evidence, now);
  }};
}

/// A group frame off the grid of its channel.
Step outlier(int piece) {
  return {[=](PacketEvidence& evidence, Moment now) {
    evidence.add(piece, kPacket[static_cast<std::size_t>(piece)], {now, Source::group, true});
  }};
}

Step settled(int piece) {
  return {[=](PacketEvidence& evidence, Moment) { evidence.settle(piece); }};
}

Step byOrder(int from, int to) {
  return {[=](PacketEvidence& evidence, Moment now) {
    for (int piece = from; piece < to; ++piece)
      evidence.addByOrder(piece, kPacket[static_cast<std::size_t>(piece)], now);
  }};
}

Step end(int index, Source source) {
  return {[=](PacketEvidence& evidence, Moment) { evidence.noteLastByte(index, source); }};
}

Step brk(Source source, bool provisional = false) {
  return {[=](PacketEvidence& evidence, Moment now) { evidence.noteBreak(source, now, provisional); }};
}

/// The first frame that a clock hears.
Step start(Source source) {
  return {[=](PacketEvidence& evidence, Moment now) {
    CycleClock clock(30'000, false);
    const auto fit = clock.observe(0, now * std::int64_t{1'000});
    noteFit(clock, fit, source, evidence);
  }};
}

Step padding(std::uint8_t value) {
  return {[=](PacketEvidence& evidence, Moment now) { evidence.add(kEnd, value, {now, Source::group}); }};
}

const Step kStray{[](PacketEvidence& evidence, Moment) { evidence.noteStray(); }};
const Step kForeign{[](PacketEvidence& evidence, Moment) { evidence.noteForeign(); }};
const Step kDrop{[](PacketEvidence& evidence, Moment) { evidence.dropLengthPieces(); }};
const Step kTimeless{[](PacketEvidence& evidence, Moment) { evidence.excuseBreaks(); }};

/// Follows the steps and returns whether the packet can be read.
bool reads(const std::vector<Step>& steps, const Timetables& timetables) {
  PacketEvidence evidence;
  Moment now = 1'000;
  for (const Step& step : steps) step.act(evidence, now += step.after);
  return evidence.read(Encoding::version5, timetables, nullptr).has_value();
}

TEST(PacketEvidence, ReadsWhatIsCertain) {
  constexpr Source kGroup = Source::group;
  constexpr Source kLength = Source::length;
  const Step kAtEnd = end(kEnd - 1, kLength);
  const Step groups = all(kGroup), lengths = all(kLength), ordered = byOrder(0, kEnd);
  // Piece 9 is a byte of the pass phrase.
  const Step most = all(kGroup, 9), last = one(9, kGroup), other = one(9, kGroup, 1);
  const Step otherLength = one(9, kLength, 1), crc = one(wire::kVersion5Crc, kGroup), text = one(10, kGroup);
  const Step aBreak = brk(kGroup), provisional = brk(kGroup, true);
  constexpr Timetables kGroupsUnexplained = {Timetable::unexplained, Timetable::explained};
  constexpr Timetables kLengthsUnexplained = {Timetable::explained, Timetable::unexplained};
  constexpr Timetables kGroupsInterrupted = {Timetable::interrupted, Timetable::explained};
  constexpr Timetables kLengthsInterrupted = {Timetable::explained, Timetable::interrupted};
  const struct {
    const char* name;
    std::vector<Step> steps;
    bool reads;
    Timetables timetables = kExplained;
  } kCases[] = {
      {"a group frame is certain", {groups}, true},
      {"lengths that nothing confirms", {lengths}, false},
      {"lengths that the last position confirms", {kAtEnd, lengths}, true},
      {"lengths seen twice", {lengths, one(0, kLength), one(2, kLength), one(3, kLength)}, true},
      {"among strays, single sightings", {kAtEnd, kStray, lengths}, false},
      {"among strays, one single sighting", {kAtEnd, kStray, all(kLength, 9), lengths}, true},
      {"an outlier", {most, outlier(9)}, false},
      {"two outliers", {most, outlier(9), outlier(9)}, false},
      {"an outlier that is of the run", {most, outlier(9), settled(9)}, true},
      {"an outlier, then a frame on the grid", {most, outlier(9), last}, true},
      {"a frame on the grid, then an outlier", {groups, outlier(9)}, true},
      {"an outlier where times mean nothing", {most, outlier(9), kTimeless}, true},
      {"a position beyond the end", {end(13, kLength), groups}, false},
      {"a group beyond the end", {end(14, kGroup), groups}, false},
      {"the last group's second byte", {end(13, kGroup), groups}, true},
      {"a length against a group", {groups, otherLength}, true},
      {"a group against a length", {otherLength, groups}, true},
      {"one vote against another", {kAtEnd, lengths, lengths, otherLength}, true},
      {"votes against two bytes", {kAtEnd, lengths, lengths, otherLength, one(8, kLength, 1)}, false},
      {"copies are one sighting", {kStray, lengths, after(300, lengths)}, false},
      {"only the order has placed them", {kAtEnd, ordered, one(2, kLength), one(3, kLength)}, false},
      {"there is only the order", {kTimeless, kAtEnd, ordered, one(2, kLength), one(3, kLength)}, true},
      {"the lengths are by order too", {kTimeless, kAtEnd, ordered}, false},
      {"among strays, the order twice", {kStray, ordered, ordered}, false},
      {"the order, which a time confirms", {kAtEnd, ordered, after(100, lengths)}, true},
      {"a time, then the order", {kAtEnd, lengths, after(100, byOrder(9, 10))}, true},
      {"the last byte is dropped", {kAtEnd, kDrop, lengths}, false},
      {"strays are dropped", {kStray, kDrop, kAtEnd, lengths}, true},
      {"foreign frames stay", {kForeign, kDrop, kAtEnd, lengths}, false},
      {"padding differs", {groups, padding(1), padding(2)}, true},
      {"one vote against one", {otherLength, all(kLength, 8), lengths}, true},
      {"agreement between contradictions",
       {groups, otherLength, otherLength, one(9, kLength), otherLength},
       true},
      {"three contradictions", {groups, otherLength, otherLength, otherLength}, false},
      {"one clash of groups", {other, last, groups}, true},
      {"two clashes of groups", {last, other, last, groups}, false},
      {"two clashes, all seen twice", {last, other, last, groups, groups}, true},
      {"two clashes long ago", {last, other, last, after(6'000, groups)}, true},
      {"two clashes far apart", {last, other, after(6'000, last), groups}, true},
      {"a break noticed late", {groups, after(-500, aBreak)}, true},
      {"votes of before a break", {otherLength, otherLength, brk(kLength), kAtEnd, lengths}, true},
      {"the CRC by itself", {most, aBreak, last, crc}, false},
      {"pieces of before a break", {most, aBreak, last}, false},
      {"the CRC and a text are the same", {most, aBreak, last, crc, text}, true},
      {"texts by themselves", {most, aBreak, last, text}, false},
      {"agreement since the second break", {most, aBreak, last, text, crc, aBreak, last, crc}, true},
      {"a channel of lengths starts", {most, start(kLength), last}, true, kLengthsUnexplained},
      {"a channel of groups starts", {most, start(kGroup), last}, false, kGroupsUnexplained},
      {"a provisional break, explained", {most, provisional, last}, true},
      {"unexplained", {most, provisional, last}, false, kGroupsUnexplained},
      {"one of the other source", {most, brk(kLength, true), last}, true, kLengthsUnexplained},
      {"the other source is interrupted", {groups}, true, kLengthsInterrupted},
      {"interrupted", {groups}, false, kGroupsInterrupted},
  };
  for (const auto& test : kCases) EXPECT_EQ(reads(test.steps, test.timetables), test.reads) << test.name;
}

TEST(PacketEvidence, AsksTwiceForWhatMayBeCopiesWhereTimesMeanNothing) {
  const struct {
    std::string text;  ///< Of the SSID and of the pass phrase.
    bool timeless;
    int sightings;
    bool reads;
  } kCases[] = {
      {"abcdefghijkl", true, 1, false}, {"abcdefghijkl", true, 2, true}, {"abcdefghijkl", false, 1, true},
      {"abcdefghij", true, 1, true},  // Five frames away: the groups differ.
      {"abcdefgh", true, 1, true},    // Too few.
  };
  for (const auto& test : kCases) {
    const auto length = static_cast<std::uint8_t>(test.text.size());
    Bytes packet = {0x10, 0, length, length};
    for (const char byte : test.text + test.text) packet.push_back(static_cast<std::uint8_t>(byte));
    packet[1] = crc8(&packet[4], packet.size() - 4);
    PacketEvidence evidence;
    if (test.timeless) evidence.excuseBreaks();
    for (int sighting = 0; sighting < test.sightings; ++sighting) {
      for (int piece = 0; piece < static_cast<int>(packet.size()); ++piece)
        evidence.add(piece, packet[static_cast<std::size_t>(piece)], {sighting * 1'000, Source::group});
    }
    EXPECT_EQ(evidence.read(Encoding::version5, kExplained, nullptr).has_value(), test.reads)
        << test.text << ' ' << test.timeless << ' ' << test.sightings;
  }
}

TEST(PacketEvidence, KnowsWhenAnotherRunHasBegun) {
  PacketEvidence evidence;
  evidence.add(9, 'a', {0, Source::group});
  evidence.add(9, 'b', {1'000, Source::group});
  evidence.add(10, 'a', {1'000, Source::length});  // Placed by what was known of the last run.
  EXPECT_FALSE(evidence.byteAt(Encoding::version5, 10));
  EXPECT_TRUE(evidence.takeRestart());
  EXPECT_EQ(evidence.byteAt(Encoding::version5, 9), 'b');
  for (int piece = 20; piece < 23; ++piece) {
    EXPECT_FALSE(evidence.takeRestart());
    evidence.add(piece, 'a', {0, Source::group});
    evidence.add(piece, 'b', {1'000, Source::length});
  }
  EXPECT_TRUE(evidence.takeRestart());
}

TEST(PacketEvidence, HoldsOneMiddleForBothEncodings) {
  PacketEvidence evidence;
  evidence.add(2, 5, {0, Source::group});
  evidence.add(kVersion3CrcPiece, 0x77, {0, Source::group});
  EXPECT_EQ(evidence.byteAt(Encoding::version3, 0), 0x77);
  EXPECT_EQ(evidence.byteAt(Encoding::version3, 1), 5);
  EXPECT_FALSE(evidence.byteAt(Encoding::version5, 1));
}

TEST(PacketLayout, HasLimits) {
  EXPECT_TRUE(readFields(0x10 + 0, 32, 64));
  EXPECT_TRUE(readFields(0x10 + 16, 16, 64));
  EXPECT_FALSE(readFields(0x10 - 1, 1, 8));
  EXPECT_FALSE(readFields(0x10 + 17, 1, 8));
  EXPECT_FALSE(readFields({}, 33, 8));
  EXPECT_FALSE(readFields({}, 1, 65));
  EXPECT_FALSE(readFields(0x10 + 1, 32, 64));
  EXPECT_FALSE(
      (PacketFields{5, 3, 0}.distinguishesRuns(8)));  // The SSID stays when a pass phrase is corrected.
  EXPECT_TRUE((PacketFields{5, 2, 0}.distinguishesRuns(8)));
}

}  // namespace
}  // namespace zor::receiver
