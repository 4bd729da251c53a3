#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/cli/Zorctl.h"

namespace {

using nlohmann::json;

std::vector<json> events(const Arguments& arguments) {
  Zorctl zorctl(arguments);
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
  std::vector<json> result;
  std::istringstream lines(zorctl.out());
  for (std::string line; std::getline(lines, line);) result.push_back(json::parse(line));
  return result;
}

/// The worked example of docs/encodings.md: each multicast frame as "ms group length meaning", the lengths of
/// the broadcast channel, the packet's bytes.
struct WorkedExample {
  std::string packet;
  std::vector<std::string> multicast;
  std::vector<std::int32_t> broadcast;
};

std::string withoutMarkup(const std::string& text) {
  return std::regex_replace(text, std::regex("[` ]"), "");
}

/// Reads one section of the page. A table's row of several times stands for as many frames; that of the next
/// cycle, for none.
WorkedExample readExample(const std::string& packetHeading, const std::string& multicastHeading) {
  const std::regex field(R"(\| .* \| .* \| .* \| `([0-9a-f ]+)` \|)");
  const std::regex frame(R"(\| ([0-9, ]+) \| (239[0-9.]+) \| (\d+) \|(?: `01:00.*` \|)? ([^|]+) \|)");
  const std::regex data(R"((\d+(?:, \d+)?: `[0-9a-f ]+`).*)");
  const std::regex lengths(R"(    (?:syncs|header|home|secret!!|01 b3 61) {2,}([0-9 ]+))");
  WorkedExample example;
  std::string heading;
  std::ifstream page(ZOR_SOURCE_DIR "/docs/encodings.md");
  for (std::string line; std::getline(page, line);) {
    std::smatch match;
    if (line.starts_with("## ")) heading = line.substr(3);
    if (heading == packetHeading && std::regex_match(line, match, field)) {
      example.packet += withoutMarkup(match[1]);
    } else if (heading == multicastHeading && std::regex_match(line, match, frame)) {
      std::smatch bytes;
      const std::string last = match[4];
      if (contains(last, "next cycle")) continue;
      const std::string meaning = withoutMarkup(std::regex_match(last, bytes, data) ? bytes[1].str() : last);
      std::istringstream times(match[1]);
      for (std::string ms; std::getline(times, ms, ',');)
        example.multicast.push_back(std::to_string(std::stoi(ms)) + " " + match[2].str() + " " +
                                    match[3].str() + " " + meaning);
    } else if (std::regex_match(line, match, lengths)) {
      std::istringstream numbers(match[1]);
      for (std::int32_t length = 0; numbers >> length;) example.broadcast.push_back(length);
    }
  }
  return example;
}

std::string multicastText(const json& frame) {
  std::string meaning = frame.at("kind");
  if (meaning == "data") {
    const int offset = frame.at("offset");
    const std::string bytes = frame.at("bytes");
    const std::string second = bytes.size() == 4 ? "," + std::to_string(offset + 1) : "";
    meaning = std::to_string(offset) + second + ":" + bytes;
  }
  return std::to_string(frame.at("ms").get<int>()) + " " + frame.at("destination").get<std::string>() + " " +
         std::to_string(frame.at("length").get<int>()) + " " + meaning;
}

void expectExample(const std::vector<json>& printed, const WorkedExample& example,
                   const std::map<std::string, int>& expectedPeriods) {
  std::string packet;
  std::vector<std::string> multicast;
  std::vector<std::int32_t> broadcast;
  std::map<std::string, int> periods;
  for (const json& event : printed) {
    if (event.at("event") == "packet") packet = event.at("bytes");
    if (event.at("event") == "cycle") periods[event.at("channel")] = event.at("ms");
    if (event.at("event") != "frame") continue;
    if (event.at("channel") == "multicast") {
      multicast.push_back(multicastText(event));
    } else {
      EXPECT_EQ(event.at("ms"), 15 * broadcast.size());
      broadcast.push_back(event.at("length"));
    }
  }
  EXPECT_EQ(packet, example.packet);
  EXPECT_EQ(multicast, example.multicast);
  EXPECT_EQ(broadcast, example.broadcast);
  EXPECT_EQ(periods, expectedPeriods);
}

TEST(PacketCommand, PrintsTheWorkedExampleOfTheDocumentation) {
  const WorkedExample version5 = readExample("Version 5 packet", "Version 5, multicast channel");
  ASSERT_EQ(version5.multicast.size(), 11U);
  ASSERT_EQ(version5.broadcast.size(), 41U);
  expectExample(events({"packet", "--ssid", "home", "--pass", "secret!!", "--append", "01b361", "--json"}),
                version5, {{"multicast", 430}, {"broadcast", 715}});
  WorkedExample version3 = readExample("Version 3, and mixed runs", "Version 3, and mixed runs");
  ASSERT_EQ(version3.multicast.size(), 11U);
  version3.broadcast.clear();  // It has no such channel.
  expectExample(events({"packet", "--ssid", "home", "--pass", "secret!!", "--v3", "--json"}), version3,
                {{"multicast", 130}});
}

TEST(PacketCommand, SaysWhatEachByteMeans) {
  Zorctl zorctl({"packet", "--ssid", "a\x1b", "--pass", "0123456789", "--append", "010203"});
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
  EXPECT_TRUE(
      zorctl.out().starts_with("version 5 packet, 19 bytes\n"
                               "OFFSET  BYTES                    MEANING\n"
                               "     0  13                       16 + number of append bytes, 3\n"))
      << zorctl.out();
  for (const char* const row :
       {"     2  02                       SSID length, 2\n",
        "     3  0a                       pass phrase length, 10\n",
        "     4  61 1b                    SSID \"a\\x1b\"\n",
        "     6  30 31 32 33 34 35 36 37  pass phrase \"0123456789\"\n    14  38 39\n",
        "    16  01 02 03                 append bytes: announce on UDP port 770\n", "    30  239.111.19.",
        "    60  239.114.2.10         31  01:00:5e:72:02:0a  2, 3: 02 0a\n",
        "value 1b\n   210  255.255.255.255      37  ff:ff:ff:ff:ff:ff  position 5\n"}) {
    EXPECT_TRUE(contains(zorctl.out(), row)) << row << zorctl.out();
  }
}

}  // namespace
