#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"
#include "ZOR/protocol/LineReader.h"

namespace {

TEST(GetValue, EndsAtAColonOrTheLinesEnd) {
  char out[32];
  EXPECT_EQ(GetValue("xcmd_rsp:5:mac=A", 16, 9, out), 11);
  EXPECT_STREQ(out, "5");
  EXPECT_EQ(GetValue("abc", 3, 1, out), 3);
  EXPECT_STREQ(out, "bc");
  EXPECT_EQ(GetValue("abc", 3, 3, out), 3);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(GetValue("a::b", 4, 2, out), 3);
  EXPECT_STREQ(out, "");
}

TEST(GetKeyValue, SplitsPairs) {
  const struct {
    std::string line, key, value;
    std::int32_t next;
  } kCases[] = {
      {"mac=AA,ver=1", "mac", "AA", 7}, {"ver=1", "ver", "1", 5},  {"a=b=c,d", "a=b", "c", 6},
      {"flag,a=b", "flag,a", "b", 8},   {"a=b:c,", "a", "b:c", 6}, {"=,x", "", "", 2},
      {"nothing,here", "", "", 12},     {"", "", "", 0},           {"a=", "a", "", 2},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.line);
    std::string key(c.line.size() + 1, '#');
    std::string value(c.line.size() + 1, '#');
    const auto length = static_cast<std::int32_t>(c.line.size());
    EXPECT_EQ(GetKeyValue(c.line.data(), length, 0, key.data(), value.data()), c.next);
    EXPECT_STREQ(key.c_str(), c.key.c_str());
    EXPECT_STREQ(value.c_str(), c.value.c_str());
    if (c.key.empty() && c.line.find('=') == std::string::npos) {
      EXPECT_EQ(value[c.line.size()], '\0') << "the promised NUL after a piece without '='";
    }
  }
}

TEST(ZorTrim, TakesOnlyTrailingBlanks) {
  const std::pair<std::string, std::string> cases[] = {
      {"ab \t\r\n", "ab"}, {" ab", " ab"}, {"", ""}, {" \t\r\n", ""}, {"ab\v\f", "ab\v\f"}};
  for (auto [text, trimmed] : cases) {
    ZorTrim(text.data());
    EXPECT_STREQ(text.c_str(), trimmed.c_str());
  }
}

TEST(LineReader, HandsOutTheIdAndThePairs) {
  std::string line = "XCMD_rsp:5:mac=AA,flag,cap=2,x=9,y=8,\r\n";
  zor::LineReader reader;
  ASSERT_TRUE(reader.open(line.data(), static_cast<std::int32_t>(line.size()), zor::kResponseTag));
  EXPECT_STREQ(reader.id(), "5");
  std::vector<std::string> pairs;
  while (reader.nextPair())
    pairs.push_back(std::string(reader.key()) + "|" + reader.value() + "|" + reader.rest());
  EXPECT_EQ(pairs, (std::vector<std::string>{"mac|AA|flag,cap=2,x=9,y=8,", "flag,cap|2|x=9,y=8,", "x|9|y=8,",
                                             "y|8|", "||"}));
}

TEST(LineReader, LeavesOtherLinesAlone) {
  for (std::string line : {"xcmd_rsp", "xcmd_notify:1:mac=A \r\n", "", " xcmd_rsp:1:"}) {
    const std::string before = line;
    zor::LineReader reader;
    EXPECT_FALSE(reader.open(line.data(), static_cast<std::int32_t>(line.size()), zor::kResponseTag));
    EXPECT_EQ(line, before);
  }
}

}  // namespace
