#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "ZOR/smartconfig/Schedules.h"
#include "tests/support/RecordingAir.h"

namespace {

/// A datagram, what its payload is, and the fields that the dissector shows of it.
struct Case {
  std::string destination;
  std::uint16_t port;
  std::string payload;
  std::string fields;
};

void append(std::string& bytes, std::uint32_t number, int count) {
  for (int i = count - 1; i >= 0; --i) bytes += static_cast<char>(number >> (8 * i));
}

/// A capture of raw IPv4 packets (link type 101) that keeps the first 400 bytes of each.
class CaptureFile {
 public:
  CaptureFile() {
    const int descriptor = mkstemp(name_);
    if (descriptor >= 0) close(descriptor);
    append(bytes_, 0xa1b2c3d4, 4);
    append(bytes_, 0x00020004, 4);
    for (const std::uint32_t number : {0U, 0U, kMaxKept, 101U}) append(bytes_, number, 4);
  }
  ~CaptureFile() { unlink(name_); }
  CaptureFile(const CaptureFile&) = delete;
  CaptureFile& operator=(const CaptureFile&) = delete;

  void add(const std::string& destination, std::uint16_t port, const std::string& payload) {
    constexpr std::uint32_t kHeaders = 28;
    const auto length = static_cast<std::uint32_t>(kHeaders + payload.size());
    std::string packet;
    append(packet, 0x45000000 + length, 4);
    append(packet, 0, 4);
    append(packet, 0x40110000, 4);  // Time to live, UDP.
    append(packet, 0x0a4d0001, 4);
    append(packet, ntohl(inet_addr(destination.c_str())), 4);
    append(packet, 40000, 2);
    append(packet, port, 2);
    append(packet, (length - 20) << 16, 4);
    packet += payload;
    const std::uint32_t kept = std::min(length, kMaxKept);
    append(bytes_, seconds_++, 4);
    for (const std::uint32_t number : {0U, kept, length}) append(bytes_, number, 4);
    bytes_ += packet.substr(0, kept);
  }

  /// What tshark shows of each packet with the dissector: one line of fields, separated by '|'.
  std::vector<std::string> dissected() {
    std::ofstream(name_, std::ios::binary) << bytes_;
    std::string command =
        "tshark -X lua_script:" ZOR_SOURCE_DIR "/wireshark/zor.lua -n -T fields -E separator='|' -r ";
    command += name_;
    for (const char* const field :
         {"_ws.col.Info", "zor_config.version", "zor_config.kind", "zor_config.offset", "zor_config.bytes",
          "zor_config.length", "zor_line.tag", "zor_line.id", "zor_line.cmd", "zor_line.mac", "zor_line.ret",
          "zor_line.pair", "_ws.expert.message"})
      command += std::string(" -e ") + field;
    std::FILE* const output = popen((command + " 2>&1").c_str(), "r");
    std::vector<std::string> lines;
    char line[4096];
    while (std::fgets(line, sizeof line, output) != nullptr) {
      const std::string text = line;
      if (!text.starts_with("Running as user")) lines.push_back(text.substr(0, text.find('\n')));
    }
    EXPECT_EQ(pclose(output), 0);
    return lines;
  }

 private:
  static constexpr std::uint32_t kMaxKept = 400;

  char name_[32] = "/tmp/zor-dissector-XXXXXX";
  std::string bytes_;
  std::uint32_t seconds_ = 0;
};

void expectFields(const std::vector<Case>& cases) {
  CaptureFile capture;
  for (const Case& c : cases) capture.add(c.destination, c.port, c.payload);
  const std::vector<std::string> lines = capture.dissected();
  ASSERT_EQ(lines.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(lines[i], cases[i].fields);
}

Case frame(const std::string& destination, std::size_t length, const std::string& fields) {
  return {destination, 6001, std::string(length, '\0'), fields};
}

TEST(Dissector, ReadsSmartConfigurationFrames) {
  const std::string kDoesNotFit =
      "The length does not fit the group: check the length base in the preferences";
  expectFields({
      frame("239.122.111.114", 30, "Version 5 multicast: sync|5|sync|||30|||||||"),
      frame("239.111.19.101", 30, "Version 5 multicast: 0, 1: 13 65|5|data|0|1365|30|||||||"),
      frame("239.114.4.8", 31, "Version 5 multicast: 2, 3: 04 08|5|data|2|0408|31|||||||"),
      frame("239.114.4.8", 32,
            "Version 5 multicast: data 04 08, length 32 does not fit|5|data||0408|32|||||||" + kDoesNotFit),
      frame("239.122.111.114", 31,
            "Version 5 multicast: sync, length 31 does not fit|5|sync|||31|||||||" + kDoesNotFit),
      frame("239.90.0.0", 30, "Version 3 multicast: marker|3|marker|||30|||||||"),
      frame("239.79.59.4", 31, "Version 3 multicast: 0, 1: 3b 04|3|data|0|3b04|31|||||||"),
      frame("239.82.33.0", 38, "Version 3 multicast: 14, 15: 21 00|3|data|14|2100|38|||||||"),
      frame("255.255.255.255", 30, "Version 5 broadcast: sync 1|5|sync 1|||30|||||||"),
      frame("255.255.255.255", 388, "Version 5 broadcast: sync 2|5|sync 2|||388|||||||"),
      frame("255.255.255.255", 31, "Version 5 broadcast: sync 3|5|sync 3|||31|||||||"),
      frame("255.255.255.255", 387, "Version 5 broadcast: value ff|5|value||ff|387|||||||"),
      frame("255.255.255.255", 131, "Version 5 broadcast: position 99|5|position|99||131|||||||"),
      frame("255.255.255.255", 389, "40000 \xe2\x86\x92 6001 Len=389||||||||||||"),
      frame("239.1.2.3", 30, "40000 \xe2\x86\x92 6001 Len=30||||||||||||"),
  });
}

TEST(Dissector, ReadsLinesAndSurvivesHostileOnes) {
  expectFields({
      {"255.255.255.255", 25010, "xcmd_notify:1:mac=02:00,ver=1,cap=0x1,name=virtual\r\n",
       "notification 1:mac=02:00,ver=1,cap=0x1,name=virtual|||||"
       "|xcmd_notify|1||02:00||name=virtual|"},
      {"10.77.0.2", 25000, "XCMD_RSP:123:ret=0", "response 123:ret=0||||||XCMD_RSP|123|||0||"},
      {"10.77.0.2", 25000, "xcmd_req:0:cmd=info,\r\n", "request 0:cmd=info,||||||xcmd_req|0|info||||"},
      {"10.77.0.2", 25000, "xcmd_req::a,b=c=d,pair=1,=,\x1b[2J\xff,",
       "request :a,b=c=d,pair=1,=,.[2J.,||||||xcmd_req|||||a,b=c=d,pair=1,=,\x1b[2J\xef\xbf\xbd|"
       "Not one key and one value,Not one key and one value,Not one key and one value"},
      {"10.77.0.2", 25000, "hello:1:a=b", "40000 \xe2\x86\x92 25000 Len=11||||||||||||"},
      {"10.77.0.2", 25000, "", "40000 \xe2\x86\x92 25000 Len=0||||||||||||"},
  });
}

TEST(Dissector, ReadsEveryFrameThatTheSchedulesSend) {
  zor::SenderInputs inputs;
  std::string("home").copy(inputs.ssid, 4);
  std::string("secret!!").copy(inputs.password, 8);
  RecordingAir air;
  sendMulticastBlock(air, buildPacketV5(inputs), buildPacketV3(inputs));
  sendBroadcastBlock(air, buildPacketV5(inputs));
  CaptureFile capture;
  for (const Frame& sent : air.frames)
    capture.add(sent.destination, 6001, std::string(static_cast<std::size_t>(sent.length), '\0'));
  const std::vector<std::string> lines = capture.dissected();
  ASSERT_EQ(lines.size(), air.frames.size());
  EXPECT_TRUE(std::all_of(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("Version ") && line.find("does not fit") == std::string::npos;
  }));
}

}  // namespace
