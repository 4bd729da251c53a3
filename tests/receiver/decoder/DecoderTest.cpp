#include "receiver/decoder/Decoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace zor::receiver {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Air = std::vector<Observation>;

constexpr std::int64_t kMs = 1000;
constexpr MacAddress kPhone = {0x02, 0, 0, 0, 0, 1};
constexpr MacAddress kOtherPhone = {0x02, 0, 0, 0, 0, 2};
constexpr MacAddress kBroadcast = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};

MacAddress group(int x, std::size_t y, std::size_t z) {
  return {0x01,
          0x00,
          0x5e,
          static_cast<std::uint8_t>(x),
          static_cast<std::uint8_t>(y),
          static_cast<std::uint8_t>(z)};
}

Air inOrder(Air air) {
  std::stable_sort(air.begin(), air.end(), [](const Observation& a, const Observation& b) {
    return a.timeMicroseconds < b.timeMicroseconds;
  });
  return air;
}

/// What a phone sends, and how. Lengths include the overhead of the network it is on.
struct Phone {
  std::string ssid, passPhrase;
  Bytes append = {};
  MacAddress mac = kPhone;
  int multicastBase = 72, broadcastBase = 72, version3Base = 72;
  std::int64_t multicastInterval = 30, broadcastInterval = 15, loopInterval = 100;
  int tags = 1, repeats = 1;
  std::uint8_t crcFault = 0;

  /// CRC by long division, one bit at a time.
  static std::uint8_t crc(const Bytes& bytes, std::size_t begin) {
    unsigned remainder = 0;
    for (std::size_t i = begin; i < bytes.size(); ++i) {
      for (unsigned bit = 0; bit < 8; ++bit) {
        const unsigned out = (remainder ^ (bytes[i] >> bit)) & 1;
        remainder = (remainder >> 1) ^ (out != 0 ? 0xe0 : 0);
      }
    }
    return static_cast<std::uint8_t>(remainder);
  }

  Bytes packet(Encoding encoding) const {
    Bytes bytes{static_cast<std::uint8_t>(ssid.size()), static_cast<std::uint8_t>(passPhrase.size())};
    const bool version5 = encoding == Encoding::version5;
    bytes.insert(bytes.begin(), version5 ? 2 : 1, 0);
    bytes.insert(bytes.end(), ssid.begin(), ssid.end());
    bytes.insert(bytes.end(), passPhrase.begin(), passPhrase.end());
    if (version5) {
      bytes.insert(bytes.end(), append.begin(), append.end());
      bytes[0] = static_cast<std::uint8_t>(0x10 + append.size());
      bytes[1] = crc(bytes, 4) ^ crcFault;
    } else {
      bytes[0] = crc(bytes, 1) ^ crcFault;
    }
    return bytes;
  }

  void send(Air& air, std::int64_t& time, const MacAddress& to, std::size_t length, std::int64_t wait) const {
    air.push_back({time, mac, to, static_cast<std::int32_t>(length)});
    time += wait * kMs;
  }

  void sendPairs(Air& air, std::int64_t& time, const Bytes& bytes, int even, int odd, int base,
                 std::int64_t wait) const {
    for (std::size_t k = 0; 2 * k < bytes.size(); ++k) {
      const std::size_t second = 2 * k + 1 < bytes.size() ? bytes[2 * k + 1] : 0;
      send(air, time, group(k % 2 == 0 ? even : odd, bytes[2 * k], second),
           static_cast<std::size_t>(base) + k, wait);
    }
  }

  void version3Cycle(Air& air, std::int64_t& time) const {
    for (int i = 0; i < 3; ++i) send(air, time, group(90, 0, 0), static_cast<std::size_t>(version3Base), 10);
    sendPairs(air, time, packet(Encoding::version3), 79, 82, version3Base + 1, 10);
    time += 20 * kMs;
  }

  void multicastCycle(Air& air, std::int64_t& time) const {
    for (int i = 0; i < tags; ++i)
      send(air, time, group(122, 111, 114), static_cast<std::size_t>(multicastBase), multicastInterval);
    for (int i = 0; i < repeats; ++i)
      sendPairs(air, time, packet(Encoding::version5), 111, 114, multicastBase, multicastInterval);
    time += loopInterval * kMs;
  }

  void broadcastCycle(Air& air, std::int64_t& time) const {
    const auto sendTimes = [&](int count, std::size_t offset) {
      for (int i = 0; i < count; ++i)
        send(air, time, kBroadcast, static_cast<std::size_t>(broadcastBase) + offset, broadcastInterval);
    };
    for (const std::size_t offset : {0u, 358u, 1u}) sendTimes(tags, offset);
    const Bytes bytes = packet(Encoding::version5);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      sendTimes(repeats, 102u + bytes[i]);
      sendTimes(repeats, 2 + i);
    }
    time += loopInterval * kMs;
  }

  /// Everything sent on these channels: m(ulticast), M(ulticast with version 3 mixed in), b(roadcast), 3.
  Air run(const std::string& channels, std::int64_t begin, std::int64_t duration) const {
    Air air;
    for (const char channel : channels) {
      for (std::int64_t time = begin * kMs; time < (begin + duration) * kMs;) {
        if (channel == 'b') broadcastCycle(air, time);
        if (channel == 'm' || channel == 'M') multicastCycle(air, time);
        if (channel == '3' || channel == 'M') version3Cycle(air, time);
      }
    }
    const std::int64_t end = (begin + duration) * kMs;
    std::erase_if(air, [=](const Observation& frame) { return frame.timeMicroseconds >= end; });
    return inOrder(std::move(air));
  }

  Credentials credentials(Encoding encoding = Encoding::version5) const {
    return {ssid, passPhrase, encoding == Encoding::version5 ? append : Bytes{}, encoding, mac};
  }
};

Air merge(Air first, const Air& second) {
  first.insert(first.end(), second.begin(), second.end());
  return inOrder(std::move(first));
}

/// Loses frames at random, or holds them back and releases them in bursts.
Air disturb(const Air& sent, double loss, std::int64_t holdMs, unsigned seed) {
  std::mt19937 random(seed);
  std::bernoulli_distribution lost(loss);
  Air heard;
  std::int64_t last = INT64_MIN;
  for (Observation frame : sent) {
    if (lost(random)) continue;
    if (holdMs != 0) {
      frame.timeMicroseconds = (frame.timeMicroseconds / (holdMs * kMs) + 1) * holdMs * kMs;
      frame.timeMicroseconds = std::max(frame.timeMicroseconds, last + 200);
    }
    last = frame.timeMicroseconds;
    heard.push_back(frame);
  }
  return heard;
}

std::vector<Credentials> decode(Decoder& decoder, const Air& air) {
  std::vector<Credentials> reports;
  for (const Observation& frame : air) {
    if (const auto report = decoder.observe(frame)) reports.push_back(*report);
  }
  return reports;
}

std::vector<Credentials> decode(const Air& air) {
  Decoder decoder;
  return decode(decoder, air);
}

Encoding encodingOn(const std::string& channels) {
  return channels == "3" ? Encoding::version3 : Encoding::version5;
}

const Phone kHome{"HomeNetwork", "correct horse battery", {0x61, 0xb3}};
const std::string kLongSsid(32, 'S'), kLongPassPhrase(64, 'p');

TEST(Decoder, ReadsFramesAsWorkedOutByHand) {
  // "12345" and "6789": the CRC of the digits 1 to 9 is 0x20. Overhead 42, lengths as on an Ethernet.
  const Credentials expected{"12345", "6789", {}, Encoding::version5, kPhone};
  Air multicast, broadcast;
  const MacAddress groups[] = {group(0x7a, 0x6f, 0x72), group(0x6f, 0x10, 0x20), group(0x72, 5, 4),
                               group(0x6f, 0x31, 0x32), group(0x72, 0x33, 0x34), group(0x6f, 0x35, 0x36),
                               group(0x72, 0x37, 0x38), group(0x6f, 0x39, 0)};
  const int groupLengths[] = {72, 72, 73, 74, 75, 76, 77, 78};
  for (int i = 0; i < 8; ++i) multicast.push_back({i * 30 * kMs, kPhone, groups[i], groupLengths[i]});
  const int lengths[] = {72,  430, 73,  190, 74,  206, 75,  179, 76,  178, 77,  223, 78,  224, 79,
                         225, 80,  226, 81,  227, 82,  228, 83,  229, 84,  230, 85,  231, 86};
  for (int i = 0; i < 29; ++i) broadcast.push_back({i * 15 * kMs, kPhone, kBroadcast, lengths[i]});
  EXPECT_EQ(decode(multicast), std::vector{expected});
  EXPECT_EQ(decode(broadcast), std::vector{expected});
  // The same two texts in version 3.
  Air version3;
  const std::uint8_t crc = Phone::crc({5, 4, '1', '2', '3', '4', '5', '6', '7', '8', '9'}, 0);
  const MacAddress groups3[] = {group(0x5a, 0, 0),       group(0x4f, crc, 5),     group(0x52, 4, 0x31),
                                group(0x4f, 0x32, 0x33), group(0x52, 0x34, 0x35), group(0x4f, 0x36, 0x37),
                                group(0x52, 0x38, 0x39)};
  for (int i = 0; i < 7; ++i) version3.push_back({i * 10 * kMs, kPhone, groups3[i], 72 + i});
  const Credentials expected3{"12345", "6789", {}, Encoding::version3, kPhone};
  EXPECT_EQ(decode(version3), std::vector{expected3});
}

TEST(Decoder, ReportsEveryPacketWithARightCrcOnce) {
  Phone slow{"Cafe", "espresso!", {1, 2, 3}, kPhone, 31, 512, 100, 50, 40, 255};
  Phone eager{"Cafe", "espresso!", {1, 2, 3}, kPhone, 300, 43, 100, 5, 5, 0};
  Phone repeating = kHome;
  repeating.tags = 3;
  repeating.repeats = 4;
  Phone withoutSync = kHome;
  withoutSync.tags = 0;
  Phone faulty = kHome;
  faulty.crcFault = 0x04;
  const struct {
    const char* name;
    Phone phone;
    std::vector<std::string> runs;  // The channels of each.
  } kCases[] = {
      {"home", kHome, {"m", "b", "3"}},
      {"empty", {"", ""}, {"m", "b", "3"}},
      {"open, odd length", {"abc", ""}, {"m", "b", "3"}},
      {"longest", {kLongSsid, kLongPassPhrase}, {"m", "b", "3"}},
      {"append bytes cut", {kLongSsid, std::string(60, 'q'), {1, 2, 3, 4}}, {"m", "b"}},
      {"every append byte", {"n", "12345678", Bytes(16, 0xff)}, {"m", "b"}},
      {"not text", {std::string("\xff\x00\x10\x20", 4), "\xf0\x9f\x93\xb6\x31\x32\x33\x34"}, {"m", "b", "3"}},
      {"slow", slow, {"m", "b"}},
      {"eager", eager, {"m", "b"}},
      {"repeating", repeating, {"m", "b"}},
      {"without sync frames", withoutSync, {"m"}},
      {"wrong CRC", faulty, {"m", "b", "mb", "3", "Mb"}},
  };
  for (const auto& test : kCases) {
    for (const std::string& channels : test.runs) {
      SCOPED_TRACE(std::string(test.name) + " on " + channels);
      std::vector<Credentials> expected;
      if (test.phone.crcFault == 0) expected.push_back(test.phone.credentials(encodingOn(channels)));
      EXPECT_EQ(decode(test.phone.run(channels, 0, 60'000)), expected);
    }
  }
}

bool isPosition(const Observation& frame, int from, int to) {
  return frame.destination == kBroadcast && frame.frameLength >= 74 + from && frame.frameLength < 74 + to;
}

/// Data frames of the encoding whose even frames have this mark; that of the odd ones is 3 higher.
bool isPair(const Observation& frame, int even, int from, int to) {
  const int mark = frame.destination[3];
  return (mark == even || mark == even + 3) && frame.frameLength >= 72 + from && frame.frameLength < 72 + to;
}

TEST(Decoder, JoinsBytesFromDifferentFramesOfARun) {
  const struct {
    const char* name;
    const char* channels;
    std::int64_t holdMs, begin, duration;
    bool (*lost)(const Observation& frame);
    Encoding encoding = Encoding::version5;
  } kCases[] = {
      {"one half in groups, the other in lengths", "mb", 0, 0, 4'000,
       [](const Observation& f) { return isPair(f, 111, 9, 50) || isPosition(f, 0, 18); }},
      {"one half in version 5, the other in version 3", "M", 0, 0, 3'000,
       [](const Observation& f) { return isPair(f, 111, 1, 12) || isPair(f, 79, 13, 50); }},
      {"no sync frame on either channel", "mb", 0, 300, 1'500,
       [](const Observation& f) {
         return f.destination[3] == 122 || f.frameLength == 72 || f.frameLength == 73 ||
                f.frameLength == 72 + 358;
       }},
      {"a value that only its neighbours place", "mb", 100, 0, 3'000,
       [](const Observation& f) { return isPair(f, 111, 8, 9) || isPosition(f, 16, 17); }},
      {"one cycle of groups that were held back", "m", 300, 330, 1'020,
       [](const Observation&) { return false; }},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    Air air = kHome.run(test.channels, 0, test.begin + test.duration);
    std::erase_if(air, [&](const Observation& frame) {
      return frame.timeMicroseconds < test.begin * kMs || test.lost(frame);
    });
    EXPECT_EQ(decode(disturb(air, 0, test.holdMs, 1)), std::vector{kHome.credentials(test.encoding)});
  }
}

TEST(Decoder, NeverPairsAValueWithANeighboursPosition) {
  // Position 8 and value 9 are lost in every cycle, which leaves value 8 directly before position 9.
  for (const std::int64_t holdMs : {0, 100, 300}) {
    SCOPED_TRACE(holdMs);
    const Bytes packet = kHome.packet(Encoding::version5);
    Air gaps = kHome.run("b", 0, 20'000);
    int previous = 0;
    std::erase_if(gaps, [&](const Observation& frame) {
      const bool afterPosition8 = previous == 72 + 2 + 8;
      previous = frame.frameLength;
      return frame.frameLength == 72 + 2 + 8 || (afterPosition8 && frame.frameLength == 72 + 102 + packet[9]);
    });
    Decoder decoder;
    EXPECT_TRUE(decode(decoder, disturb(gaps, 0, holdMs, 1)).empty());
    const Air whole = disturb(kHome.run("b", 20'000, 6'000), 0, holdMs, 1);
    EXPECT_EQ(decode(decoder, whole), std::vector{kHome.credentials()});
  }
}

TEST(Decoder, SeparatesSenders) {
  Phone other{"Elsewhere", "another secret", {9}, kOtherPhone};
  other.multicastBase = other.broadcastBase = 60;
  const Air air = merge(kHome.run("mb", 0, 8'000), other.run("mb", 7, 8'000));
  const auto reports = decode(disturb(air, 0.2, 0, 5));
  ASSERT_EQ(reports.size(), 2u);
  EXPECT_EQ(std::count(reports.begin(), reports.end(), kHome.credentials()), 1);
  EXPECT_EQ(std::count(reports.begin(), reports.end(), other.credentials()), 1);
}

TEST(Decoder, ReportsARunThatReplacesAnother) {
  Phone corrected = kHome;
  corrected.passPhrase = "Correct horse battery";
  Phone different{"Work", "some other secret", {7}};
  for (const Phone& next : {corrected, different}) {
    for (const auto& [before, after] :
         {std::pair{"m", "m"}, {"b", "b"}, {"mb", "mb"}, {"3", "3"}, {"mb", "3"}, {"3", "mb"}}) {
      SCOPED_TRACE(next.ssid + " on " + after + " after " + before);
      const Air air = merge(kHome.run(before, 0, 5'017), next.run(after, 5'020, 9'000));
      EXPECT_EQ(decode(air),
                (std::vector{kHome.credentials(encodingOn(before)), next.credentials(encodingOn(after))}));
    }
  }
}

TEST(Decoder, DoesNotMixRunsEvenWhenTheCrcHolds) {
  // The first run is heard whole but for data frame 8. The second has another CRC, which is never heard, and
  // another data frame 8, with bytes that make a packet of both runs pass the CRC of the first.
  const Bytes first = kHome.packet(Encoding::version5);
  Bytes forged = first;
  do {
    if (++forged[16] == 0) ++forged[17];
  } while (Phone::crc(forged, 4) != first[1] || forged[16] == first[16]);
  Air partial = kHome.run("m", 0, 1'300);
  std::erase_if(partial, [](const Observation& frame) { return frame.frameLength == 72 + 8; });
  Air mixed = partial;
  mixed.push_back({1'900 * kMs, kPhone, group(111, forged[16], forged[17]), 72 + 8});
  EXPECT_TRUE(decode(mixed).empty());
  // The second run starts at an odd moment, or after a silence and through a buffer that hides its times.
  for (const auto& [start, step] : {std::pair<std::int64_t, std::int64_t>{1'660, 30'000}, {7'000, 1'000}}) {
    Air replaced = partial;
    for (int cycle = 0; cycle < 3; ++cycle) {
      for (int k = 1; k < 19; ++k) {
        const auto pair = static_cast<std::size_t>(2 * k);
        replaced.push_back({(start + 700 * cycle) * kMs + step * k, kPhone,
                            group(k % 2 == 0 ? 111 : 114, forged[pair], forged[pair + 1]), 72 + k});
      }
    }
    EXPECT_TRUE(decode(replaced).empty()) << start;
  }
  // Frame 8 at its time in the first run's own schedule is believed.
  Air whole = partial;
  whole.push_back({1'670 * kMs, kPhone, group(111, first[16], first[17]), 72 + 8});
  EXPECT_EQ(decode(whole), std::vector{kHome.credentials()});
}

TEST(Decoder, DoesNotExchangeTheLengths) {
  // Held broadcasts of a run of both encodings. The CRC of version 5 does not cover the lengths.
  // Microseconds, the destination's last bytes, length.
  std::istringstream frames(
      "7282 ffffff 92 25057 ffffff 93 53259 ffffff 200 61401 ffffff 95 69900 6f10ae 90 71940 6f6368 92 "
      "72972 726866 93 74012 6f6463 94 76628 ffffff 291 78827 ffffff 96 89289 ffffff 296 "
      "97070 ffffff 97 107828 ffffff 296 114829 ffffff 98 133108 ffffff 99 151067 ffffff 100 "
      "169030 ffffff 101 179265 ffffff 295 204867 ffffff 103 313630 ffffff 90 325595 ffffff 448 "
      "331862 ffffff 91 341996 ffffff 208 349903 ffffff 92 367826 ffffff 93 368932 726761 95 "
      "369940 5a0000 90 370948 5a0000 90 371956 5a0000 90 372972 4f0f00 91 373996 520863 92 "
      "376068 526664 94 379180 7a6f72 90 380188 6f10ae 90 384300 6f6463 94 385348 726761 95 "
      "387364 5a0000 90 388372 5a0000 90 389388 4f0f00 91 390412 520863 92 391444 4f6868 93 "
      "392484 526664 94 394588 526100 96 398428 ffffff 192 403829 ffffff 95 ");
  Air air;
  std::int64_t time = 0;
  unsigned to = 0;
  std::int32_t length = 0;
  while (frames >> std::dec >> time >> std::hex >> to >> std::dec >> length)
    air.push_back(
        {time, kPhone, to == 0xffffff ? kBroadcast : group(static_cast<int>(to >> 16), to >> 8, to), length});
  const Air once = air;
  for (Observation frame : once) {  // The run goes on.
    frame.timeMicroseconds += 420'000;
    air.push_back(frame);
  }
  const auto reports = decode(air);
  EXPECT_FALSE(reports.empty());
  for (const Credentials& report : reports) {
    EXPECT_EQ(report.ssid, "");
    EXPECT_EQ(report.passPhrase, "chhfdcga");
  }
}

/// Frames of strangers, 400 a second: `perAddress` in a row from each of `addresses` addresses, in turn.
Air strangers(int addresses, int perAddress, std::int64_t milliseconds) {
  std::mt19937 random(7);
  Air air;
  for (int i = 0; i < 2 * milliseconds / 5; ++i) {
    const int number = i / perAddress % addresses;
    const MacAddress mac = {
        6, 0, 0, 0, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
    const MacAddress to = i % 3 == 0 ? group(111, random() % 256, random() % 256) : kBroadcast;
    air.push_back({i * 2'500, mac, to, static_cast<std::int32_t>(60 + random() % 1400)});
  }
  return air;
}

std::int64_t firstReport(Decoder& decoder, const Air& air, const Credentials& expected) {
  for (const Observation& frame : air) {
    if (decoder.observe(frame) == expected) return frame.timeMicroseconds;
  }
  return INT64_MAX;
}

TEST(Decoder, IsNotStarvedByStrangers) {
  constexpr std::int64_t kBefore = 30'000;
  for (const char* channels : {"mb", "b"}) {
    const Air run = kHome.run(channels, kBefore, 10'000);
    Decoder undisturbed;
    const std::int64_t quiet = firstReport(undisturbed, run, kHome.credentials()) - kBefore * kMs;
    for (const auto& [addresses, perAddress] :
         {std::pair{16, 1}, {17, 1}, {20, 1}, {60, 1}, {400, 1}, {60'000, 1}, {60'000, 4}, {60'000, 10}}) {
      SCOPED_TRACE(std::string(channels) + ", addresses " + std::to_string(addresses) + " of " +
                   std::to_string(perAddress));
      Decoder decoder;
      const Air air = merge(strangers(addresses, perAddress, kBefore + 10'000), run);
      EXPECT_LE(firstReport(decoder, air, kHome.credentials()) - kBefore * kMs, quiet * 3 / 2);
    }
  }
}

Air relayed(Air air, int step) {
  for (Observation& copy : air) {
    copy.timeMicroseconds += 2 * kMs;
    copy.frameLength += step;
  }
  return air;
}

TEST(Decoder, ReadsAPhoneThatIsHeardWithItsAccessPoint) {
  for (const char* channels : {"m", "b", "mb"}) {
    const Air run = kHome.run(channels, 0, 20'000);
    Decoder one;
    const std::int64_t single = firstReport(one, run, kHome.credentials());
    for (const int step : {2, 8, -16}) {
      for (const double loss : {0.0, 0.2, 0.4}) {
        SCOPED_TRACE(std::string(channels) + " step " + std::to_string(step) + " loss " +
                     std::to_string(loss));
        Decoder decoder;
        const Air air = disturb(merge(run, relayed(run, step)), loss, 0, 1);
        const std::int64_t report = firstReport(decoder, air, kHome.credentials());
        EXPECT_LE(report, loss > 0 ? 18'000 * kMs : single * 5 / 4);
      }
    }
  }
}

TEST(Decoder, ReadsAPhoneThatIsHeardWithAnAccessPointThatHoldsFrames) {
  for (const char* channels : {"m", "mb"}) {
    const Air run = kHome.run(channels, 0, 20'000);
    for (const int step : {2, -16}) {
      SCOPED_TRACE(std::string(channels) + " step " + std::to_string(step));
      Decoder decoder;
      const Air air = merge(run, disturb(relayed(run, step), 0, 300, 1));
      EXPECT_LE(firstReport(decoder, air, kHome.credentials()), 2'500 * kMs);
    }
  }
}

TEST(Decoder, DoesNotTakeTwoFramesForCopiesOfAThird) {
  // Frames 5 and 9 carry the same bytes, and copies are 2 longer: so one of each looks like two of frame 7.
  const Phone phone{.ssid = "MyHome", .passPhrase = "abcdefghabijklmn"};
  const Air run = phone.run("m", 0, 20'000);
  std::size_t rejections = 0;
  for (unsigned seed = 1; seed <= 1'000; ++seed) {
    Decoder decoder;
    decoder.setRejectionListener([&](const Rejection&) { ++rejections; });
    const Air air = merge(disturb(run, 0.6, 0, seed), disturb(relayed(run, 2), 0.6, 300, seed + 5'000));
    for (const Credentials& report : decode(decoder, air)) EXPECT_EQ(report, phone.credentials()) << seed;
  }
  EXPECT_LE(rejections, 60u);  // Each is wrong credentials that nothing but the CRC has stopped.
}

TEST(Decoder, DoesNotMixTwoPhonesBehindOneAddress) {
  const Phone other{.ssid = kHome.ssid, .passPhrase = "c0rrect h0rse battery", .append = {0x62, 0xb3}};
  const Air both = merge(kHome.run("m", 0, 60'000), other.run("m", 217, 60'000));
  std::size_t rejections = 0;
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    Decoder decoder;
    decoder.setRejectionListener([&](const Rejection&) { ++rejections; });
    for (const Credentials& report : decode(decoder, disturb(both, 0.7, 0, seed)))
      EXPECT_TRUE(report == kHome.credentials() || report == other.credentials());
  }
  EXPECT_LE(rejections, 10u);  // Each is wrong credentials that nothing but the CRC has stopped.
}

TEST(Decoder, TellsWhatOnlyTheCrcStopped) {
  Phone faulty = kHome;
  faulty.crcFault = 0x04;
  std::vector<Credentials> rejected;
  Decoder decoder;
  decoder.setRejectionListener(
      [&](const Rejection& rejection) { rejected.push_back(rejection.credentials); });
  EXPECT_TRUE(decode(decoder, faulty.run("m", 0, 1'500)).empty());
  EXPECT_EQ(rejected, std::vector{kHome.credentials()});
}

TEST(Decoder, FindsABaseOfTheBroadcastsOwnWithoutTheirSyncs) {
  Phone phone = kHome;
  phone.broadcastBase = 100;
  Air air = phone.run("m", 0, 400);  // Not the whole packet.
  for (const Observation& frame : phone.run("b", 400, 10'000)) {
    const int offset = frame.frameLength - phone.broadcastBase;
    if (offset > 1 && offset < 358) air.push_back(frame);
  }
  EXPECT_EQ(decode(air), std::vector{phone.credentials()});
}

TEST(Decoder, TakesNoOtherBaseWhileTheLikelyOneIsOpen) {
  // Every byte of the texts is the same, so they agree at many bases, and no sync group is heard.
  const Phone phone{std::string(20, 'z'), std::string(30, 'z')};
  for (unsigned seed = 1; seed <= 30; ++seed) {
    Air air = phone.run("Mb", 0, 12'000);
    std::erase_if(air, [](const Observation& frame) { return frame.destination == group(122, 111, 114); });
    const auto reports = decode(disturb(air, 0.5, 0, seed));
    ASSERT_FALSE(reports.empty()) << seed;
    for (const Credentials& report : reports) EXPECT_EQ(report, phone.credentials(report.encoding)) << seed;
  }
}

TEST(Decoder, AppendBytesAreNewsAfterVersion3) {
  Decoder decoder;
  EXPECT_EQ(decode(decoder, kHome.run("3", 0, 2'000)), std::vector{kHome.credentials(Encoding::version3)});
  EXPECT_EQ(decode(decoder, kHome.run("m", 2'000, 3'000)), std::vector{kHome.credentials()});
  EXPECT_TRUE(decode(decoder, kHome.run("3", 5'000, 2'000)).empty());
  decoder.reset();
  EXPECT_EQ(decode(decoder, kHome.run("m", 0, 3'000)), std::vector{kHome.credentials()});
  EXPECT_TRUE(decode(decoder, kHome.run("M", 3'000, 3'000)).empty());
}

TEST(Decoder, WaitsWhileSyncFramesDisagree) {
  Phone phone = kHome;
  phone.multicastBase = 172;
  for (const int cycles : {3, 5}) {
    Air air = phone.run("m", 100, cycles * 700);
    air.insert(air.begin(), {0, kPhone, group(122, 111, 114), 72});
    EXPECT_EQ(decode(air).empty(), cycles == 3);
  }
}

TEST(Decoder, SurvivesGarbageAndFloods) {
  std::mt19937_64 random(3);
  Decoder decoder;
  const Air run = kHome.run("mb", 0, 4'000);
  std::vector<Credentials> reports;
  for (const Observation& frame : run) {
    for (int i = 0; i < 20; ++i) {
      Observation garbage = frame;
      const std::uint64_t bits = random();
      for (std::size_t byte = 0; byte < 6; ++byte)
        garbage.sender[byte] = static_cast<std::uint8_t>(bits >> 8 * byte);
      garbage.frameLength = static_cast<std::int32_t>(random());
      if (i % 2 == 0) garbage.frameLength &= 0x1ff;
      if (i % 3 == 0) garbage.timeMicroseconds = static_cast<std::int64_t>(random());
      if (i % 5 == 0) garbage.destination = group(static_cast<int>(bits >> 60 | 64), bits >> 48, bits >> 40);
      if (i % 7 == 0) garbage.sender = kOtherPhone;
      if (const auto report = decoder.observe(garbage)) ADD_FAILURE() << report->ssid;
    }
    if (const auto report = decoder.observe(frame)) reports.push_back(*report);
  }
  EXPECT_EQ(reports, std::vector{kHome.credentials()});
  EXPECT_LE(decoder.progress().size(), Decoder::kMaxSenders);
}

TEST(Decoder, ShowsProgress) {
  Decoder decoder;
  EXPECT_TRUE(decoder.progress().empty());
  const Air air = kHome.run("m", 0, 2'000);
  decode(decoder, Air(air.begin(), air.begin() + 2));  // the sync frame and frame 0
  ASSERT_EQ(decoder.progress().size(), 1u);
  EXPECT_EQ(decoder.progress()[0].bytesKnown, 2);
  EXPECT_EQ(decoder.progress()[0].bytesTotal, 0);
  decode(decoder, Air(air.begin() + 2, air.end()));
  const SenderProgress done = decoder.progress().at(0);
  EXPECT_EQ(done.sender, kPhone);
  EXPECT_EQ(done.bytesKnown, 38);
  EXPECT_EQ(done.bytesTotal, 38);
  EXPECT_TRUE(done.reported);
  decoder.reset();
  EXPECT_TRUE(decoder.progress().empty());
}

}  // namespace
}  // namespace zor::receiver
