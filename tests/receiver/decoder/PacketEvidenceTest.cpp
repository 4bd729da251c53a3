#include "receiver/decoder/PacketEvidence.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

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
    evidence.add(piece, kPacket[static_cast<std::size_t>(piece)] ^ flaw, source, now);
  }};
}

Step all(Source source, int skipped = -1) {
  return {[=](PacketEvidence& evidence, Moment now) {
    for (int piece = 0; piece < kEnd; ++piece)
      if (piece != skipped) one(piece, source).act(evidence, now);
  }};
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

Step padding(std::uint8_t value) {
  return {[=](PacketEvidence& evidence, Moment now) { evidence.add(kEnd, value, Source::group, now); }};
}

const Step kStray{[](PacketEvidence& evidence, Moment) { evidence.noteStray(); }};
const Step kForeign{[](PacketEvidence& evidence, Moment) { evidence.noteForeign(); }};
const Step kDisorder{[](PacketEvidence& evidence, Moment) { evidence.noteDisorder(); }};
const Step kDrop{[](PacketEvidence& evidence, Moment) { evidence.dropLengthPieces(); }};
const Step kTimeless{[](PacketEvidence& evidence, Moment) { evidence.excuseBreaks(); }};
const Step kConfirmed{[](PacketEvidence& evidence, Moment) { evidence.confirmOrder(); }};

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
  constexpr Timetable kUnexplained = Timetable::unexplained;
  constexpr Timetable kInterrupted = Timetable::interrupted;
  const struct {
    const char* name;
    std::vector<Step> steps;
    bool reads;
    Timetables timetables = kExplained;
  } kCases[] = {
      {"a group frame is certain", {all(kGroup)}, true},
      {"lengths that nothing confirms", {all(kLength)}, false},
      {"lengths that the last position confirms", {kAtEnd, all(kLength)}, true},
      {"lengths seen twice", {all(kLength), one(0, kLength), one(2, kLength), one(3, kLength)}, true},
      {"among strays, single sightings", {kAtEnd, kStray, all(kLength)}, false},
      {"among strays, one single sighting", {kAtEnd, kStray, all(kLength, 9), all(kLength)}, true},
      {"after disorder, two sightings", {kDisorder, kDisorder, kDisorder, all(kLength), all(kLength)}, false},
      {"after disorder, single sightings",
       {kDisorder, all(kLength), one(0, kLength), one(2, kLength), one(3, kLength)},
       false},
      {"after disorder, a length seen once", {kDisorder, kAtEnd, all(kLength, 0), all(kLength)}, false},
      {"a position beyond the end", {end(13, kLength), all(kGroup)}, false},
      {"a group beyond the end", {end(14, kGroup), all(kGroup)}, false},
      {"the last group's second byte", {end(13, kGroup), all(kGroup)}, true},
      {"a length against a group", {all(kGroup), one(9, kLength, 1)}, true},
      {"a group against a length", {one(9, kLength, 1), all(kGroup)}, true},
      {"one vote against another", {kAtEnd, all(kLength), all(kLength), one(9, kLength, 1)}, true},
      {"votes against two bytes",
       {kAtEnd, all(kLength), all(kLength), one(9, kLength, 1), one(8, kLength, 1)},
       false},
      {"copies are one sighting", {kStray, all(kLength), after(300, all(kLength))}, false},
      {"only the order has placed them", {kAtEnd, byOrder(0, kEnd), one(2, kLength), one(3, kLength)}, false},
      {"there is only the order",
       {kTimeless, kAtEnd, byOrder(0, kEnd), one(2, kLength), one(3, kLength)},
       true},
      {"the lengths are by order too", {kTimeless, kAtEnd, byOrder(0, kEnd)}, false},
      {"among strays, the order twice", {kStray, byOrder(0, kEnd), byOrder(0, kEnd)}, false},
      {"the order, which times confirm", {kAtEnd, byOrder(0, kEnd), kConfirmed}, true},
      {"the order, which a time confirms", {kAtEnd, byOrder(0, kEnd), after(100, all(kLength))}, true},
      {"a time, then the order", {kAtEnd, all(kLength), after(100, byOrder(9, 10))}, true},
      {"the last byte is dropped", {kAtEnd, kDrop, all(kLength)}, false},
      {"strays are dropped", {kStray, kDisorder, kDrop, kAtEnd, all(kLength)}, true},
      {"foreign frames stay", {kForeign, kDrop, kAtEnd, all(kLength)}, false},
      {"padding differs", {all(kGroup), padding(1), padding(2)}, true},
      {"one vote against one", {one(9, kLength, 1), all(kLength, 8), all(kLength)}, true},
      {"contradictions with agreement between",
       {all(kGroup), one(9, kLength, 1), one(9, kLength, 1), one(9, kLength), one(9, kLength, 1)},
       true},
      {"contradictions in a row",
       {all(kGroup), one(9, kLength, 1), one(9, kLength, 1), one(9, kLength, 1)},
       false},
      {"one clash of groups", {one(9, kGroup, 1), one(9, kGroup), all(kGroup)}, true},
      {"two clashes of groups", {one(9, kGroup), one(9, kGroup, 1), one(9, kGroup), all(kGroup)}, false},
      {"two clashes, all seen twice",
       {one(9, kGroup), one(9, kGroup, 1), one(9, kGroup), all(kGroup), all(kGroup)},
       true},
      {"two clashes long ago",
       {one(9, kGroup), one(9, kGroup, 1), one(9, kGroup), after(6'000, all(kGroup))},
       true},
      {"two clashes far apart",
       {one(9, kGroup), one(9, kGroup, 1), after(6'000, one(9, kGroup)), all(kGroup)},
       true},
      {"a break noticed late", {all(kGroup), after(-500, brk(kGroup))}, true},
      {"votes of before a break",
       {one(9, kLength, 1), one(9, kLength, 1), brk(kLength), kAtEnd, all(kLength)},
       true},
      {"the CRC by itself", {all(kGroup, 9), brk(kGroup), one(9, kGroup), one(1, kGroup)}, false},
      {"pieces of before a break", {all(kGroup, 9), brk(kGroup), one(9, kGroup)}, false},
      {"the CRC and a text are the same",
       {all(kGroup, 9), brk(kGroup), one(9, kGroup), one(1, kGroup), one(10, kGroup)},
       true},
      {"texts by themselves", {all(kGroup, 9), brk(kGroup), one(9, kGroup), one(10, kGroup)}, false},
      {"agreement since the second of two breaks",
       {all(kGroup, 9), brk(kGroup), one(9, kGroup), one(10, kGroup), one(1, kGroup), brk(kGroup),
        one(9, kGroup), one(1, kGroup)},
       true},
      {"a provisional break, explained", {all(kGroup, 9), brk(kGroup, true), one(9, kGroup)}, true},
      {"a provisional break, unexplained",
       {all(kGroup, 9), brk(kGroup, true), one(9, kGroup)},
       false,
       {kUnexplained, Timetable::explained}},
      {"a provisional break of the other source",
       {all(kGroup, 9), brk(kLength, true), one(9, kGroup)},
       true,
       {Timetable::explained, kUnexplained}},
      {"the other source is interrupted", {all(kGroup)}, true, {Timetable::explained, kInterrupted}},
      {"interrupted", {all(kGroup)}, false, {kInterrupted, Timetable::explained}},
  };
  for (const auto& test : kCases) EXPECT_EQ(reads(test.steps, test.timetables), test.reads) << test.name;
}

TEST(PacketEvidence, KnowsWhenAnotherRunHasBegun) {
  PacketEvidence evidence;
  evidence.add(9, 'a', Source::group, 0);
  evidence.add(9, 'b', Source::group, 1'000);
  evidence.add(10, 'a', Source::length, 1'000);  // Placed by what was known of the last run.
  EXPECT_FALSE(evidence.byteAt(Encoding::version5, 10));
  EXPECT_TRUE(evidence.takeRestart());
  EXPECT_EQ(evidence.byteAt(Encoding::version5, 9), 'b');
  for (int piece = 20; piece < 23; ++piece) {
    EXPECT_FALSE(evidence.takeRestart());
    evidence.add(piece, 'a', Source::group, 0);
    evidence.add(piece, 'b', Source::length, 1'000);
  }
  EXPECT_TRUE(evidence.takeRestart());
}

TEST(PacketEvidence, HoldsOneMiddleForBothEncodings) {
  PacketEvidence evidence;
  evidence.add(2, 5, Source::group, 0);
  evidence.add(kVersion3CrcPiece, 0x77, Source::group, 0);
  EXPECT_EQ(evidence.byteAt(Encoding::version3, 0), 0x77);
  EXPECT_EQ(evidence.byteAt(Encoding::version3, 1), 5);
  EXPECT_FALSE(evidence.byteAt(Encoding::version5, 1));
}

}  // namespace
}  // namespace zor::receiver
