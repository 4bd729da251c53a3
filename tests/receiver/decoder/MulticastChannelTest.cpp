#include "receiver/decoder/MulticastChannel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "receiver/decoder/Crc8.h"
#include "receiver/decoder/WireConstants.h"

namespace zor::receiver {
namespace {

constexpr GroupOctets kSync = {122, 111, 114};

/// A channel of version 5 whose frames come every 30 ms.
struct Channel {
  PacketEvidence evidence;
  MulticastChannel channel{kVersion5Multicast};
  std::int64_t time = 0;

  static GroupOctets groupOf(int index, std::uint8_t bytes) {
    return {static_cast<std::uint8_t>(index % 2 == 0 ? 111 : 114), bytes, bytes};
  }
  void hear(const GroupOctets& group, int length) {
    channel.observe({group, length, time += 30'000}, evidence);
  }
  /// Data frames from one index to another, with the index as bytes.
  void hearData(int from, int to, int base = 72) {
    for (int index = from; index <= to; ++index)
      hear(groupOf(index, static_cast<std::uint8_t>(index)), base + index);
  }
};

TEST(MulticastChannel, ForgetsARunWhoseLengthsDiffer) {
  Channel phone;
  phone.hear(kSync, 72);
  phone.hearData(0, 3);
  EXPECT_EQ(phone.evidence.knownCount(), 8);
  phone.hear(kSync, 80);
  EXPECT_EQ(phone.evidence.knownCount(), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(phone.channel.contested());
    phone.hear(kSync, 80);
  }
  EXPECT_FALSE(phone.channel.contested());
  phone.hearData(0, 3, 80);
  EXPECT_EQ(phone.evidence.knownCount(), 8);
  phone.hear(Channel::groupOf(1, 1), 82);  // An odd frame where an even one belongs.
  EXPECT_EQ(phone.evidence.knownCount(), 0);
  EXPECT_FALSE(phone.channel.syncLength());
}

TEST(MulticastChannel, AsksWaitingFramesWhetherTheyFitABase) {
  for (const int base : {72, 73}) {
    Channel phone;
    phone.hearData(3, 5);
    phone.channel.adoptSyncLength(base, phone.evidence);
    EXPECT_EQ(phone.evidence.knownCount(), base == 72 ? 6 : 0);
  }
}

TEST(MulticastChannel, FindsTheLengthOfASingleCopy) {
  const struct {
    const char* name;
    int heard;  ///< Data frames of the base 72, from 0.
    int sightings;
    int length;
    std::uint8_t bytes;
    bool areHeld;
    std::optional<int> found;
    Source source = Source::group;
  } kCases[] = {
      {"below the base if it were longer", 0, 1, 73, 9, true, 73},
      {"any of both", 4, 1, 82, 9, true, {}},
      {"one has other bytes", 6, 1, 76, 2, false, 74},
      {"held, and seen once", 6, 1, 76, 2, true, {}},
      {"held, and seen twice", 6, 2, 76, 2, true, 74},
      {"both have other bytes", 6, 2, 76, 9, true, {}},
      {"no time before it is steady", 5, 1, 79, 9, false, {}},
      {"the time of the shorter", 7, 1, 81, 9, false, 79, Source::length},
      {"the time of neither", 7, 1, 83, 9, false, {}},
      {"no time when held", 7, 1, 81, 9, true, {}},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    Channel phone;
    phone.hear(kSync, 72);
    for (int i = 0; i < test.sightings; ++i, phone.time += 500'000) phone.hearData(0, test.heard - 1);
    GroupFrame frame{Channel::groupOf(test.length % 2, test.bytes), test.length, phone.time - 470'000};
    EXPECT_EQ(phone.channel.findLength(frame, 2, test.areHeld, phone.evidence), test.found.has_value());
    EXPECT_EQ(frame.length, test.found.value_or(test.length));
    EXPECT_EQ(frame.source, test.source);
  }
  for (const auto& [first, second] : {std::pair{72, 74}, {74, 72}}) {
    Channel phone;
    GroupFrame one{kSync, first}, other{kSync, second};
    EXPECT_FALSE(phone.channel.findLength(one, 2, false, phone.evidence));
    EXPECT_TRUE(phone.channel.findLength(other, 2, false, phone.evidence));
    EXPECT_EQ(other.length, 72);
  }
}

/// A packet of ten bytes.
std::vector<std::uint8_t> packetOf(Encoding encoding) {
  const bool version5 = encoding == Encoding::version5;
  std::vector<std::uint8_t> packet = {0, 2, 5, 'a', 'b', 'c', 'd', 'e', 'f', 'g'};
  if (version5) packet = {16, 0, 2, 4, 'a', 'b', 'c', 'd', 'e', 'f'};
  const std::size_t covered = version5 ? wire::kVersion5Payload : wire::kVersion3SsidLength;
  packet[version5 ? wire::kVersion5Crc : wire::kVersion3Crc] =
      crc8(&packet[covered], packet.size() - covered);
  return packet;
}

TEST(MulticastChannel, ReadsAnOutlierOnlyInItsPlaceOrWhereTimesMeanNothing) {
  const struct {
    double place;  ///< When frame 4 is heard, in steps of the pace.
    bool timeless, reads;
  } kCases[] = {{4.0, false, true}, {4.6, false, true}, {2.5, false, false}, {2.5, true, true}};
  for (const MulticastFormat* format : {&kVersion5Multicast, &kVersion3Multicast}) {
    const auto packet = packetOf(format->encoding);
    for (const auto& [place, timeless, reads] : kCases) {
      PacketEvidence evidence;
      MulticastChannel channel(*format);
      const auto hear = [&](int index, double at) {
        const std::size_t byte = 2 * static_cast<std::size_t>(index);
        const GroupOctets group{index % 2 == 0 ? format->evenMark : format->oddMark, packet[byte],
                                packet[byte + 1]};
        const auto pace = static_cast<double>(format->defaultPace);
        channel.observe({group, 72 + format->firstFrameOffset + index, static_cast<std::int64_t>(at * pace)},
                        evidence);
      };
      channel.observe({format->syncGroup, 72, 0}, evidence);
      hear(2, 2);
      if (place < 3) hear(4, place);
      hear(3, 3);
      if (place > 3) hear(4, place);
      if (timeless) {
        channel.noteTimeless();
        evidence.excuseBreaks();
      }
      hear(0, 8);
      hear(1, 9);
      const Timetables explained = {Timetable::explained, Timetable::explained};
      EXPECT_EQ(evidence.read(format->encoding, explained, nullptr).has_value(), reads) << place << timeless;
    }
  }
}

}  // namespace
}  // namespace zor::receiver
