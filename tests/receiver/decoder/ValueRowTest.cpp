#include "receiver/decoder/ValueRow.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zor::receiver {
namespace {

constexpr std::int64_t kPace = 30'000;

/// The values heard between position `after` and position `last`.
ValueRow rowOf(std::optional<int> after, const std::string& values) {
  ValueRow row;
  row.begin(after, 0);
  for (const char value : values) row.push(static_cast<std::uint8_t>(value));
  return row;
}

/// The first bytes of a packet; a dot for one that is not known.
std::string bytesOf(const PacketEvidence& evidence) {
  std::string bytes;
  for (int index = 0; index < 10; ++index)
    bytes += static_cast<char>(evidence.byteAt(Encoding::version5, index).value_or('.'));
  return bytes;
}

void know(PacketEvidence& evidence, const std::string& bytes, Source source, Moment seen = 0) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '.')
      evidence.add(static_cast<int>(i), static_cast<std::uint8_t>(bytes[i]), {seen, source});
  }
}

TEST(ValueRow, PlacesValuesWithOnePlace) {
  const struct {
    const char* name;
    std::string known;
    std::optional<int> after;
    std::string values;
    int last;
    std::string bytes;
    int packetLength = 0;
    int milliseconds = 100;
  } kCases[] = {
      {"one for each position", "", 3, "ab", 5, "....ab...."},
      {"after a sync frame", "", -1, "ab", 1, "ab........"},
      {"a value was lost", "", 3, "a", 5, ".........."},
      {"a known byte leaves one place", "....x.....", 3, "a", 5, "....xa...."},
      {"the same byte is in its place or the next", "....a.....", 3, "a", 5, "....a....."},
      {"of some the first", ".....b....", 3, "abc", 7, "....ab...."},
      {"of some the last", "......b...", 3, "abc", 7, "......bc.."},
      {"more than there are places", "", 3, "abc", 5, ".........."},
      {"no place is left", "....xy....", 3, "a", 5, "....xy...."},
      {"a copy", "", 3, "aab", 5, "....ab...."},
      {"the same in both bytes, or a copy", "", 3, "aa", 5, ".........."},
      {"after an unknown position", "", std::nullopt, "ab", 5, ".........."},
      {"over a cycle's end", "", 7, "abc", 0, "c.......ab", 10},
      {"over a cycle's end of unknown length", "", 7, "abc", 0, ".........."},
      {"eight values", "", -1, "abcdefgh", 7, "abcdefgh.."},
      {"more values than a row has room for", "", -1, "abcdefghi", 7, ".........."},
      {"held for 300 ms", "", 3, "ab", 5, "....ab....", 0, 480},
      {"a cycle may have been lost", "", 3, "ab", 5, "..........", 0, 500},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    PacketEvidence evidence;
    know(evidence, test.known, Source::group);
    ValueRow row = rowOf(test.after, test.values);
    if (row.end(test.last, test.milliseconds * 1'000, test.packetLength, kPace)) row.place(evidence);
    EXPECT_EQ(bytesOf(evidence), test.bytes);
  }
}

TEST(ValueRow, TestsKnownBytesWhenItIsComplete) {
  PacketEvidence evidence;
  know(evidence, "....x.....", Source::length);
  ValueRow row = rowOf(3, "ab");
  ASSERT_TRUE(row.end(5, 100'000, 0, kPace));
  EXPECT_TRUE(row.place(evidence));
  EXPECT_EQ(bytesOf(evidence), "....ab....");
}

TEST(ValueRow, AmongStraysOneSightingExcludesNothing) {
  PacketEvidence evidence;
  evidence.noteStray();
  for (const auto& [seen, bytes] : {std::pair{0, "....x....."}, {1'000, "....xa...."}}) {
    know(evidence, "....x.....", Source::length, seen);
    ValueRow row = rowOf(3, "a");
    ASSERT_TRUE(row.end(5, 100'000, 0, kPace));
    row.place(evidence);
    EXPECT_EQ(bytesOf(evidence), bytes);
  }
}

TEST(OpenRows, WaitUntilOnePlaceIsLeft) {
  PacketEvidence evidence;
  OpenRows rows;
  const auto add = [&](const std::string& values, int after, int last) {
    ValueRow row = rowOf(after, values);
    ASSERT_TRUE(row.end(last, 100'000, 0, kPace));
    EXPECT_FALSE(row.place(evidence));
    rows.add(row);
  };
  add("a", 3, 5);
  add("b", 4, 6);
  rows.place(evidence);
  EXPECT_EQ(bytesOf(evidence), "..........");
  know(evidence, "....x.....", Source::group);
  rows.place(evidence);  // The first row's byte leaves one place to the second row's.
  EXPECT_EQ(bytesOf(evidence), "....xab...");
  // A value is placed once: what contradicts it later stays.
  PacketEvidence later;
  know(later, ".....b....", Source::group);
  ValueRow row = rowOf(3, "abc");
  ASSERT_TRUE(row.end(7, 100'000, 0, kPace));
  EXPECT_FALSE(row.place(later));
  know(later, "....y.....", Source::length);
  row.place(later);
  EXPECT_EQ(bytesOf(later), "....yb....");
}

}  // namespace
}  // namespace zor::receiver
