#include "receiver/decoder/PacketEvidence.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zor::receiver {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// SSID "12345", pass phrase "6789": the CRC of the digits is 0x20.
const Bytes kPacket = {0x10, 0x20, 5, 4, '1', '2', '3', '4', '5', '6', '7', '8', '9'};
constexpr Timetables kExplained = {Timetable::explained, Timetable::explained};

struct Step {
  enum Kind { all, allOf, one, otherValue, stray, disorder, end, brk, provisional } kind;
  Source source = Source::length;
  int piece = 0;
};

/// Follows the steps, one second apart, and returns whether the packet can be read.
bool reads(const std::vector<Step>& steps, const Timetables& timetables) {
  PacketEvidence evidence;
  Moment now = 1'000;
  for (const Step& step : steps) {
    const auto slot = static_cast<std::size_t>(step.piece);
    now += 1'000;
    switch (step.kind) {
      case Step::all:
      case Step::allOf:
        for (int piece = 0; piece < static_cast<int>(kPacket.size()); ++piece) {
          const bool skipped = step.kind == Step::allOf && piece == step.piece;
          if (!skipped) evidence.add(piece, kPacket[static_cast<std::size_t>(piece)], step.source, now);
        }
        break;
      case Step::one:
        evidence.add(step.piece, kPacket[slot], step.source, now);
        break;
      case Step::otherValue:
        evidence.add(step.piece, kPacket[slot] ^ 1U, step.source, now);
        break;
      case Step::stray:
        evidence.noteStray();
        break;
      case Step::disorder:
        evidence.noteDisorder();
        break;
      case Step::end:
        evidence.noteLastByte(12, Source::length);
        break;
      case Step::brk:
        evidence.noteBreak(step.source, now, false);
        break;
      case Step::provisional:
        evidence.noteBreak(step.source, now, true);
        break;
    }
  }
  return evidence.read(Encoding::version5, timetables, nullptr).has_value();
}

TEST(PacketEvidence, ReadsWhatIsCertain) {
  using enum Step::Kind;
  constexpr Source kGroup = Source::group;
  constexpr Source kLength = Source::length;
  constexpr Timetable kUnexplained = Timetable::unexplained;
  constexpr Timetable kInterrupted = Timetable::interrupted;
  const struct {
    const char* name;
    std::vector<Step> steps;
    bool reads;
    Timetables timetables = kExplained;
  } kCases[] = {
      {"a group frame is certain", {{all, kGroup}}, true},
      {"lengths that nothing confirms", {{all, kLength}}, false},
      {"lengths that the last position confirms", {{end}, {all, kLength}}, true},
      {"lengths seen twice", {{all, kLength}, {one, kLength, 0}, {one, kLength, 2}, {one, kLength, 3}}, true},
      {"among strays, single sightings", {{end}, {stray}, {all, kLength}}, false},
      {"among strays, one single sighting", {{end}, {stray}, {allOf, kLength, 9}, {all, kLength}}, true},
      {"after disorder, two sightings",
       {{disorder}, {disorder}, {disorder}, {all, kLength}, {all, kLength}},
       false},
      {"a length against a group", {{all, kGroup}, {otherValue, kLength, 9}}, true},
      {"a group against a length", {{otherValue, kLength, 9}, {all, kGroup}}, true},
      {"one vote against another", {{end}, {all, kLength}, {all, kLength}, {otherValue, kLength, 9}}, true},
      {"votes against two bytes",
       {{end}, {all, kLength}, {all, kLength}, {otherValue, kLength, 9}, {otherValue, kLength, 8}},
       false},
      {"pieces of before a break", {{allOf, kGroup, 9}, {brk, kGroup}, {one, kGroup, 9}}, false},
      {"the CRC and a text are the same",
       {{allOf, kGroup, 9}, {brk, kGroup}, {one, kGroup, 9}, {one, kGroup, 1}, {one, kGroup, 10}},
       true},
      {"texts by themselves",
       {{allOf, kGroup, 9}, {brk, kGroup}, {one, kGroup, 9}, {one, kGroup, 10}},
       false},
      {"agreement since the second of two breaks",
       {{allOf, kGroup, 9},
        {brk, kGroup},
        {one, kGroup, 9},
        {one, kGroup, 10},
        {one, kGroup, 1},
        {brk, kGroup},
        {one, kGroup, 9},
        {one, kGroup, 1}},
       true},
      {"a provisional break, explained", {{allOf, kGroup, 9}, {provisional, kGroup}, {one, kGroup, 9}}, true},
      {"a provisional break, unexplained",
       {{allOf, kGroup, 9}, {provisional, kGroup}, {one, kGroup, 9}},
       false,
       {kUnexplained, Timetable::explained}},
      {"the other source is interrupted", {{all, kGroup}}, true, {Timetable::explained, kInterrupted}},
      {"interrupted", {{all, kGroup}}, false, {kInterrupted, Timetable::explained}},
  };
  for (const auto& test : kCases) EXPECT_EQ(reads(test.steps, test.timetables), test.reads) << test.name;
}

TEST(PacketEvidence, KnowsWhenAnotherRunHasBegun) {
  PacketEvidence evidence;
  evidence.add(9, 'a', Source::group, 0);
  evidence.add(9, 'b', Source::group, 1'000);
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
