#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "receiver/decoder/BaseMatcher.h"
#include "receiver/decoder/BaseSearch.h"
#include "receiver/decoder/BroadcastBase.h"
#include "receiver/decoder/PendingPairs.h"

namespace zor::receiver {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Base = std::optional<int>;

/// SSID "qkits", pass phrase "X36b".
const Bytes kPacket = {0x10, 0x09, 5, 4, 'q', 'k', 'i', 't', 's', 'X', '3', '6', 'b'};
const int kEnd = static_cast<int>(kPacket.size());

TEST(BaseSearch, FindsTheNextBest) {
  const int agreements[] = {4, 2, 7, 6};
  const auto agreement = [&](int base) { return agreements[base]; };
  EXPECT_EQ(findBestBase(0, 3, agreement).agreedElsewhere, 6);
  EXPECT_EQ(findBestBase(0, 2, agreement).agreedElsewhere, 4);
}

TEST(BroadcastBase, FollowsTheStepsOfSyncFrames) {
  struct Frame {
    int length;
    int gap = 15;  // ms
  };
  const struct {
    const char* name;
    std::vector<Frame> frames;
    Base base;
  } kCases[] = {
      {"sync 1 and 2", {{72}, {430}}, 72},
      {"sync 1 and 2 again and again", {{72}, {72}, {430}}, 72},
      {"sync 1 and 2 with a stray between", {{72}, {100}, {430}}, 72},
      {"sync 2 and 3", {{430}, {73}}, 72},
      {"255 and sync 1", {{429}, {72, 115}}, {}},
      {"values and positions", {{190}, {74}, {206}, {75}}, {}},
      {"others' frames against four votes", {{72}, {430}, {74}, {72}, {430}, {500}, {858}}, 72},
      {"others' frames against two votes", {{72}, {430}, {500}, {858}}, 500},
      {"another sync 2 and 3 against two votes", {{72}, {430}, {600}, {243}}, 72},
      {"the span of all once the base is known", {{72}, {430}, {90}, {448, 200}}, 90},
  };
  for (const auto& test : kCases) {
    BroadcastBase base;
    std::int64_t time = 0;
    for (const Frame& frame : test.frames) base.observe(frame.length, time += frame.gap * 1'000);
    EXPECT_EQ(base.base(), test.base) << test.name;
  }
}

TEST(BroadcastBase, GoesWhenAnotherRunHasAnother) {
  for (const bool restarts : {false, true}) {
    BroadcastBase base;
    for (int i = 0; i < 20; ++i) base.vote(72, 2);
    if (restarts) base.restart();
    for (int i = 0; i < 3; ++i) base.vote(90, 2);
    EXPECT_EQ(base.base(), restarts ? 90 : 72);
    base.vote(90, 2);  // No base has more than eight votes.
    EXPECT_EQ(base.base(), 90);
  }
}

struct Expectation {
  const char* name;
  Bytes packet;
  int from, to;  ///< Bytes that both channels have shown.
  Base likely;
  Base base;
  int wrong = 0;        ///< How many of these bytes differ.
  bool length = false;  ///< Whether the packet's length is known.
};

Bytes row(char first, int step) {
  Bytes bytes;
  for (int i = 0; i < 20; ++i) bytes.push_back(static_cast<std::uint8_t>(first + i * step));
  return bytes;
}

/// Bytes of a packet as groups have shown them.
PacketEvidence known(const Expectation& test) {
  PacketEvidence evidence;
  for (int i = test.from; i < test.to; ++i) {
    const int flaw = i < test.from + test.wrong ? 1 : 0;
    evidence.add(i, static_cast<std::uint8_t>(test.packet[static_cast<std::size_t>(i)] ^ flaw),
                 {0, Source::group});
  }
  for (const int i : {0, 2, 3})
    if (test.length) evidence.add(i, test.packet[static_cast<std::size_t>(i)], {0, Source::group});
  return evidence;
}

// Texts that fit in many places: of the multicasts, of the broadcasts, of both.
const Bytes kSame(20, 'z'), kUp = row('a', 1), kDown = row('z', -1);

/// Values and positions of a packet's bytes, with the base 72.
BaseMatcher matcherOf(const Bytes& packet, int from, int to) {
  BaseMatcher matcher;
  for (int i = from; i < to; ++i) matcher.add(72 + 102 + packet[static_cast<std::size_t>(i)], 72 + 2 + i);
  return matcher;
}

TEST(BaseMatcher, FindsTheBaseThatKnownBytesAgreeWith) {
  const Expectation kCases[] = {
      {"five bytes", kPacket, 5, 10, {}, 72},
      {"four bytes", kPacket, 5, 9, {}, {}},
      {"five bytes and one that disagrees", kPacket, 5, 11, {}, {}, 1},
      {"a text that fits in many places", kUp, 4, 12, {}, {}},
      {"two bytes of a likely base", kPacket, 5, 7, 72, 72},
      {"one byte of a likely base", kPacket, 5, 6, 72, {}},
      {"a likely base and one byte in five that disagrees", kPacket, 5, 10, 72, 72, 1},
      {"a likely base and two that disagree", kPacket, 5, 10, 72, {}, 2},
      {"a likely base against a better one", kUp, 4, 12, 71, {}},
      {"a likely base by the packet's end", kPacket, 12, 12, 72, 72, 0, true},
      {"a likely base against the packet's end", kPacket, 12, 12, 71, {}, 0, true},
  };
  for (const auto& test : kCases) {
    const auto matcher = matcherOf(test.packet, test.length ? 9 : test.from, test.length ? kEnd : test.to);
    EXPECT_EQ(matcher.match(known(test), test.likely), test.base) << test.name;
  }
}

/// Frames of a packet, with the base 72.
PendingPairs pairsOf(const Bytes& packet, int from, int to) {
  PendingPairs pairs;
  for (int k = from; k < to; ++k) {
    const auto i = static_cast<std::size_t>(2 * k);
    pairs.keep({72 + k, k % 2 != 0, packet[i], i + 1 < packet.size() ? packet[i + 1] : std::uint8_t{0}}, 0);
  }
  return pairs;
}

TEST(PendingPairs, FindTheBaseThatKnownBytesAgreeWith) {
  const Expectation kCases[] = {
      {"four bytes", kPacket, 4, 8, {}, 72},
      {"three bytes", kPacket, 4, 7, {}, {}},
      {"four bytes and one that disagrees", kPacket, 4, 9, {}, {}, 1},
      {"a text that fits in many places", kSame, 4, 12, {}, {}},
      {"two bytes of a likely base", kPacket, 4, 6, 72, 72},
      {"one byte of a likely base", kPacket, 4, 5, 72, {}},
      {"as much of a likely base as of another", kSame, 4, 6, 72, {}},
      {"one byte of a likely base that disagrees", kPacket, 4, 9, 72, {}, 1},
      {"no other while the likely one is open", kPacket, 4, 8, 62, {}},
      {"a likely base that is contradicted", kPacket, 4, 8, 74, 72},
      {"a likely base by the packet's end", kPacket, 12, 12, 72, 72, 0, true},
      {"a likely base against the packet's end", kPacket, 12, 12, 70, {}, 0, true},
  };
  for (const auto& test : kCases) {
    const PendingPairs pairs = pairsOf(test.packet, 2, 7);
    const PacketEvidence evidence = known(test);
    const auto base = pairs.baseByBytes(Encoding::version5, evidence, test.likely, evidence.packetLength());
    EXPECT_EQ(base, test.base) << test.name;
  }
}

TEST(PendingPairs, AreAPacketOnceItsCrcHolds) {
  Bytes wrong = kPacket, longer = kPacket;
  ++wrong[8];
  longer.resize(16);
  const auto base = [](const Bytes& packet, int from, int to, bool again) {
    PendingPairs pairs = pairsOf(packet, from, to);
    if (again)
      pairsOf(packet, from, from + 1).forEach([&](const GroupPair& pair, Moment) { pairs.keep(pair, 0); });
    return pairs.baseOfWholePacket(Encoding::version5);
  };
  EXPECT_EQ(base(kPacket, 0, 7, true), 72);
  EXPECT_EQ(base(kPacket, 0, 7, false), Base());  // Frames before the first may be missing.
  EXPECT_EQ(base(wrong, 0, 7, true), Base());
  EXPECT_EQ(base(kPacket, 0, 6, true), Base());
  EXPECT_EQ(base(longer, 0, 8, true), Base());
}

/// An access point relays frames with another overhead. So frames in a row that differ in length only may be
/// one frame, and then the others' lengths do not tell indices either.
TEST(PendingPairs, AreNoPacketWithCopiesAmongThem) {
  const Bytes packet = {0x10, 0x58, 5, 4, 'q', 'k', 'i', 't', 'q', 'k', '3', '6', 'b'};
  for (const Moment gap : {6, 7}) {
    PendingPairs pairs = pairsOf(packet, 0, 3);
    pairs.keep({72 + 4, false, 'q', 'k'}, gap);  // Index 3 is heard after it.
    pairsOf(packet, 3, 7).forEach([&](const GroupPair& pair, Moment) { pairs.keep(pair, 20); });
    pairsOf(packet, 0, 1).forEach([&](const GroupPair& pair, Moment) { pairs.keep(pair, 40); });
    EXPECT_EQ(pairs.baseOfWholePacket(Encoding::version5), gap < 7 ? Base() : Base(72)) << gap;
    pairs.keep({72, false, 'x', 'y'}, 60);  // Of another run, which is relayed as well.
    EXPECT_EQ(pairs.mayBe(72), gap >= 7) << gap;
  }
}

TEST(PendingPairs, AreOfOneRun) {
  PendingPairs pairs = pairsOf(kPacket, 0, 7);
  pairs.keep({75, true, 'x', 'y'}, 0);
  EXPECT_EQ(pairs.shortest(), 75);
  pairs.keep({75 + 50, true, 'x', 'y'}, 0);
  EXPECT_EQ(pairs.shortest(), 75 + 50);
  EXPECT_FALSE(pairsOf(kPacket, 2, 7).mayBe(71));  // Odd frames would be even.
}

TEST(BaseMatcher, FindsTheBaseThatChannelsHaveInCommon) {
  const auto common = [](const Bytes& packet, int from, int to) {
    return matcherOf(packet, from, to).commonBase(pairsOf(packet, 2, 7));
  };
  EXPECT_EQ(common(kPacket, 6, 11), 72);
  EXPECT_EQ(common(kPacket, 6, 10), Base());
  EXPECT_EQ(common(kDown, 6, 12), Base());
}

TEST(BaseMatcher, KeepsWhatSaysSomething) {
  const PacketEvidence evidence = known({"", kPacket, 5, 10, {}, {}});
  BaseMatcher matcher = matcherOf(kPacket, 5, 10);
  for (int i = 0; i < 40; ++i) {
    matcher.add(300, 120);      // Known already.
    matcher.add(100, 200 + i);  // Not a value and a position.
  }
  EXPECT_EQ(matcher.match(evidence, {}), 72);
  matcher.add(500, 80);  // Too long for this base.
  EXPECT_EQ(matcher.match(evidence, {}), Base());
}

}  // namespace
}  // namespace zor::receiver
