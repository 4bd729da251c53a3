#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ZOR/ZorSuite.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes packetV5(const std::string& ssid, const std::string& password, const Bytes& append = {}) {
  Bytes out(kZorPacketV5BufferSize);
  const std::int32_t length = ZorBuildPacketSmartConfigV5(
      out.data(), ssid.c_str(), password.c_str(), append.data(), static_cast<std::uint32_t>(append.size()));
  EXPECT_EQ(Bytes(out.begin() + length, out.end()), Bytes(out.size() - static_cast<std::size_t>(length)))
      << "bytes after the packet must stay zero";
  out.resize(static_cast<std::size_t>(length));
  return out;
}

Bytes packetV3(const std::string& ssid, const std::string& password) {
  Bytes out(kZorPacketV3BufferSize, 0xEE);
  const std::int32_t length = ZorBuildPacketSmartConfigV3(out.data(), ssid.c_str(), password.c_str());
  EXPECT_EQ(out[static_cast<std::size_t>(length)], 0xEE) << "nothing may be written after the packet";
  out.resize(static_cast<std::size_t>(length));
  return out;
}

TEST(Crc8, MatchesTheKnownRemainders) {
  EXPECT_EQ(ZorGetCrc8("123456789", 9), 0x20U);
  EXPECT_EQ(ZorGetCrc8("", 0), 0x00U);
  EXPECT_EQ(ZorGetCrc8("\x01", 1), 0x91U);
  EXPECT_EQ(ZorGetCrc8("\x80", 1), 0xE0U);
  EXPECT_EQ(ZorGetCrc8("\xFF", 1), 0xCFU);
}

TEST(PacketV5, IsHeaderAndPayload) {
  EXPECT_EQ(packetV5("", ""), (Bytes{0x10, 0x00, 0x00, 0x00}));
  EXPECT_EQ(packetV5("abc", ""), (Bytes{0x10, 0xF0, 3, 0, 'a', 'b', 'c'}));
  EXPECT_EQ(packetV5("home", "secret!!", {0x01, 0xB3, 0x61}),
            (Bytes{0x13, 0x65, 4, 8, 'h', 'o', 'm', 'e', 's', 'e', 'c', 'r', 'e', 't', '!', '!', 0x01, 0xB3,
                   0x61}));
  EXPECT_EQ(packetV5("\xC3\xA9", "")[4], 0xC3) << "bytes outside ASCII pass through";
}

TEST(PacketV5, CutsWhatIsTooLong) {
  const struct {
    std::size_t ssid, password, append;
    Bytes header;  // without the CRC
    std::size_t length;
  } kCases[] = {
      {40, 0, 0, {0x10, 32, 0}, 36},     {0, 70, 0, {0x10, 0, 64}, 68},     {32, 60, 16, {0x14, 32, 60}, 100},
      {32, 64, 16, {0x10, 32, 64}, 100}, {30, 50, 16, {0x20, 30, 50}, 100},
  };
  for (const auto& c : kCases) {
    const Bytes packet =
        packetV5(std::string(c.ssid, 's'), std::string(c.password, 'p'), Bytes(c.append, 0xAA));
    EXPECT_EQ(packet.size(), c.length);
    EXPECT_EQ((Bytes{packet[0], packet[2], packet[3]}), c.header);
    EXPECT_EQ(packet[1], ZorGetCrc8(packet.data() + 4, static_cast<std::uint32_t>(packet.size() - 4)));
    EXPECT_EQ(std::count(packet.begin() + 4, packet.end(), 0xAA), c.header[0] - 0x10);
  }
}

TEST(PacketV3, CoversItsLengthsByTheCrc) {
  EXPECT_EQ(packetV3("", ""), (Bytes{0x00, 0, 0}));
  EXPECT_EQ(packetV3("a", ""), (Bytes{0x09, 1, 0, 'a'}));
  const Bytes longest = packetV3(std::string(40, 's'), std::string(70, 'p'));
  EXPECT_EQ(longest.size(), 99U);
  EXPECT_EQ((Bytes{longest[1], longest[2], longest[3], longest[34], longest[35], longest[98]}),
            (Bytes{32, 64, 's', 's', 'p', 'p'}));
}

}  // namespace
