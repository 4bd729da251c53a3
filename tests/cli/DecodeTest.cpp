#include <gtest/gtest.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/cli/Zorctl.h"
#include "tests/support/Wait.h"

namespace {

using nlohmann::json;

const std::string kCaptures = CAPTURES;
const std::string kRun = kCaptures + "radiotap.pcap";

TEST(Decode, SaysInOneLineWhyItFails) {
  const struct {
    Arguments arguments;
    const char* says;
    int exitCode = 2;
  } kCases[] = {
      {{"decode"}, "give a capture file, or --interface"},
      {{"decode", "/no/such"}, "'/no/such' cannot be read: No such file or directory"},
      {{"decode", "a.pcap", "--interface", "zor1"}, "excludes"},
      {{"decode", "a.pcap", "--frames"}, "--show-secrets"},
      {{"decode", kRun, "--report", kRun}, "is the capture itself"},
      {{"decode", kRun, "--report", "/tmp/a", "--timeline", "/tmp/a"}, "the same file"},
      {{"decode", kRun, "--report", "/no/such"}, "'/no/such' cannot be written: No such file", 1},
      {{"decode", kRun, "--timeline", "/tmp"}, "'/tmp' cannot be written: it is a directory", 1},
      {{"decode", "/etc/passwd"}, "is no capture that can be read: unknown file format", 1},
      {{"decode", "/"}, "is no capture that can be read", 1},
      {{"decode", "--interface", "nowhere0"}, "cannot capture on 'nowhere0'", 1},
  };
  for (const auto& [arguments, says, exitCode] : kCases) {
    Zorctl zorctl(arguments);
    EXPECT_EQ(zorctl.wait(), exitCode) << says;
    EXPECT_EQ(zorctl.out(), "");
    EXPECT_TRUE(isOneLine(zorctl.err()) && contains(zorctl.err(), says)) << zorctl.err();
  }
}

TEST(Decode, WritesPicturesWholeOrNotAtAll) {
  Zorctl full({"decode", kRun, "--report", "/dev/full"});
  EXPECT_EQ(full.wait(), 1);
  EXPECT_TRUE(isOneLine(full.err()) && contains(full.err(), "'/dev/full' cannot be written: No space left"));
  EXPECT_TRUE(contains(full.out(), "complete 0.2 s")) << full.out();

  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("zor-pictures-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  Zorctl failing({"decode", "/etc/passwd", "--timeline", folder / "a.svg"});
  EXPECT_EQ(failing.wait(), 1);
  EXPECT_TRUE(std::filesystem::is_empty(folder));
  std::ofstream(folder / "a.svg") << "old";
  Zorctl drawing({"decode", kCaptures + "two-senders.pcap", "--timeline", folder / "a.svg"});
  EXPECT_EQ(drawing.wait(), 0) << drawing.err();
  std::ifstream stream(folder / "a.svg");
  const std::string svg{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_TRUE(svg.starts_with("<svg ") && svg.ends_with("</svg>\n")) << svg;
  EXPECT_TRUE(contains(svg, "the CRC never holds") && contains(svg, "class=\"mark contradicting\"")) << svg;
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
  std::filesystem::remove_all(folder);
}

TEST(Decode, ReportsWhatWasReadOfAFileCutShort) {
  Zorctl zorctl({"decode", kCaptures + "cut.pcap"});
  EXPECT_EQ(zorctl.wait(), 1);
  EXPECT_TRUE(contains(zorctl.out(), "complete 0.2 s after its first frame, with frame 25")) << zorctl.out();
  EXPECT_TRUE(contains(zorctl.out(), "every 15 ms, pause 100 ms")) << zorctl.out();
  EXPECT_TRUE(isOneLine(zorctl.err()) && contains(zorctl.err(), "was read up to frame 86: truncated"))
      << zorctl.err();
}

TEST(Decode, ShowsCredentialsOnlyWhenAsked) {
  for (const bool asJson : {false, true}) {
    Arguments arguments = {"decode", kCaptures + "radiotap.pcap"};
    if (asJson) arguments.push_back("--json");
    Zorctl masked(arguments);
    EXPECT_EQ(masked.wait(), 0);
    EXPECT_FALSE(contains(masked.out(), "secret!!") || contains(masked.out(), "Home")) << masked.out();
    EXPECT_TRUE(contains(masked.out(), "H***") && contains(masked.out(), "\"********\"")) << masked.out();
    arguments.push_back("--show-secrets");
    Zorctl shown(arguments);
    EXPECT_EQ(shown.wait(), 0);
    EXPECT_TRUE(contains(shown.out(), "\"secret!!\"") && contains(shown.out(), "\"Home\"")) << shown.out();
  }
}

TEST(Decode, NamesFindingsAndLinkLayersInJson) {
  const struct {
    const char *file, *finding, *linkLayer;
  } kCases[] = {
      {"overhead-changes.pcap", "lengths_changed", "802.11 radiotap"},
      {"base-zero.pcap", "length_base_zero", "Ethernet"},
      {"no-broadcast.pcap", "broadcast_missing", "802.11 radiotap"},
      {"only-v3.pcap", "only_version_3", "802.11 radiotap"},
      {"short.pcap", "too_short", "802.11 radiotap"},
      {"held.pcap", "held_in_bursts", "802.11 radiotap"},
      {"unknown-pace.pcap", "pace_unknown", "802.11 radiotap"},
      {"cooked1.pcap", "complete", "Linux cooked v1"},
      {"cooked2.pcap", "complete", "Linux cooked v2"},
      {"raw.pcap", "complete", "raw IP"},
      {"wifi.pcap", "complete", "802.11"},
      {"ppi.pcap", "complete", "802.11 PPI"},
  };
  for (const auto& [file, finding, linkLayer] : kCases) {
    Zorctl zorctl({"decode", kCaptures + file, "--json"});
    zorctl.wait();
    EXPECT_EQ(zorctl.event("started").at("link_layer"), linkLayer) << file;
    EXPECT_TRUE(contains(zorctl.out(), "\"" + std::string(finding) + "\"")) << file << zorctl.out();
  }
}

TEST(Decode, SimulatesHowLongAModuleNeedsAtTheLossFound) {
  Zorctl zorctl({"decode", kCaptures + "sparse.pcap", "--json"});
  EXPECT_EQ(zorctl.wait(), 0) << zorctl.err();
  const json sender = zorctl.event("sender");
  EXPECT_EQ(sender.at("verdict"), "too_sparse");
  const std::string text = sender.at("findings").at(0).at("text");
  EXPECT_TRUE(contains(text, "a module needs about ")) << text;
}

TEST(Decode, DecodesAnInterface) {
  Zorctl decode({"decode", "--interface", "zor1", "--json"});
  ASSERT_TRUE(decode.prints("started"));
  Zorctl phone({"provision", "--ssid", "s", "--pass", "p", "--timeout", "30"});
  EXPECT_TRUE(decode.prints("completed")) << decode.err();
  decode.interrupt();
  EXPECT_EQ(decode.wait(), 0) << decode.err();
  EXPECT_EQ(decode.event("sender").at("verdict"), "complete");
  EXPECT_EQ(decode.event("sender").at("sender"), "02:00:00:00:00:01");
}

/// The lines that a shell command prints. It must succeed.
std::vector<std::string> linesOf(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  std::string text;
  char buffer[4096];
  for (std::size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    text.append(buffer, count);
  EXPECT_EQ(pclose(pipe), 0) << command;
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// A run that one program captured is the same list of frames to another.
TEST(Decode, AgreesWithAnotherDissector) {
  const std::string file =
      std::filesystem::temp_directory_path() / ("zor-decode-" + std::to_string(getpid()));
  const pid_t tcpdump = fork();
  if (tcpdump == 0) {
    execlp("tcpdump", "tcpdump", "-Z", "root", "-U", "-i", "zor1", "-w", file.c_str(), nullptr);
    _exit(127);
  }
  const auto hasHeader = [&] {
    std::error_code error;
    return std::filesystem::file_size(file, error) >= 24 && !error;
  };
  ASSERT_TRUE(waitUntil(hasHeader, 10000))
      << "tcpdump could not be run: scripts/install-packages test installs it";
  Zorctl phone({"provision", "--ssid", "Home", "--pass", "secret!!", "--timeout", "2", "--linger", "0"});
  EXPECT_EQ(phone.wait(), 1);
  kill(tcpdump, SIGTERM);
  waitpid(tcpdump, nullptr, 0);

  std::vector<std::string> ours;
  for (const std::string& line : linesOf(ZORCTL " decode --json --show-secrets --frames " + file)) {
    const json event = json::parse(line);
    if (event.at("event") != "frame") continue;
    constexpr int kIpv4Header = 20;
    ours.push_back(event.at("destination").get<std::string>() + "\t" +
                   std::to_string(event.at("length").get<int>() - kIpv4Header));
  }
  const auto theirs = linesOf("tshark -r " + file +
                              " -Y 'eth.dst == ff:ff:ff:ff:ff:ff || udp.dstport == 6001'"
                              " -T fields -e eth.dst -e udp.length 2>/dev/null");
  EXPECT_GT(ours.size(), 50u);
  EXPECT_EQ(ours, theirs);
  std::filesystem::remove(file);
}

}  // namespace
