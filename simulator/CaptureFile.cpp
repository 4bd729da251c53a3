#include "simulator/CaptureFile.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zor::simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kKept = 80;  ///< Bytes of a frame in the file.
constexpr std::array<std::uint8_t, 4> kPhoneAddress = {10, 77, 0, 1};
constexpr receiver::MacAddress kAccessPoint = {0x02, 0, 0, 0, 0xA9, 1};
constexpr std::int32_t kIpAndUdp = 28;

/// The fields of a header, one after the other.
class Fields {
 public:
  Fields& byte(unsigned value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    return *this;
  }
  Fields& big16(unsigned value) { return byte(value >> 8U).byte(value & 0xffU); }
  Fields& little16(unsigned value) { return byte(value & 0xffU).byte(value >> 8U & 0xffU); }
  Fields& little32(std::uint64_t value) {
    return little16(static_cast<unsigned>(value & 0xffffU))
        .little16(static_cast<unsigned>(value >> 16U & 0xffffU));
  }
  template <class Range>
  Fields& all(const Range& range) {
    bytes.insert(bytes.end(), range.begin(), range.end());
    return *this;
  }

  Bytes bytes;
};

unsigned linkType(CaptureLink link) {
  switch (link) {
    case CaptureLink::ethernet:
      return 1;
    case CaptureLink::cooked1:
      return 113;
    case CaptureLink::cooked2:
      return 276;
    case CaptureLink::rawIp:
      return 101;
    case CaptureLink::wifi:
      return 105;
    case CaptureLink::radiotap:
      return 127;
    case CaptureLink::ppi:
      return 192;
  }
  return 0;
}

/// IPv4 and UDP to port 6001; the group's upper nine bits are those of the groups in use.
void addDatagram(Fields& fields, const AirFrame& frame) {
  const bool isGroup = frame.destination[0] == 1;
  const std::array<std::uint8_t, 4> group = {239, frame.destination[3], frame.destination[4],
                                             frame.destination[5]};
  const std::array<std::uint8_t, 4> all = {255, 255, 255, 255};
  const auto total = static_cast<unsigned>(kIpAndUdp + frame.length);
  fields.big16(0x4500).big16(total).big16(0).big16(0x4000).byte(1).byte(17).big16(0).all(kPhoneAddress);
  fields.all(isGroup ? group : all).big16(40000).big16(6001).big16(total - 20).big16(0);
}

std::int32_t cipherBytes(Encryption encryption) {
  switch (encryption) {
    case Encryption::none:
      return 0;
    case Encryption::wep:
      return 8;
    case Encryption::tkip:
      return 20;
    case Encryption::ccmp:
      return 16;
  }
  return 0;
}

/// Returns the frame's length; `fields` gets its beginning.
std::int32_t addWifi(Fields& fields, const AirFrame& frame) {
  constexpr std::int32_t kLlc = 8;
  const bool isProtected = frame.encryption != Encryption::none;
  const std::size_t start = fields.bytes.size();
  fields.byte(frame.hasQos ? 0x88 : 0x08);
  fields.byte((frame.fromAccessPoint ? 2U : 1U) | (frame.isRetry ? 8U : 0U) | (isProtected ? 0x40U : 0U));
  fields.little16(0);
  if (frame.fromAccessPoint) {
    fields.all(frame.destination).all(kAccessPoint).all(frame.source);
  } else {
    fields.all(kAccessPoint).all(frame.source).all(frame.destination);
  }
  fields.little16(static_cast<unsigned>(frame.sequence) << 4U);
  if (frame.hasQos) fields.little16(frame.isAggregate ? 0x80 : 0);
  const auto header = static_cast<std::int32_t>(fields.bytes.size() - start);
  if (!isProtected) {
    fields.byte(0xaa).byte(0xaa).byte(3).byte(0).big16(0).big16(0x0800);
    addDatagram(fields, frame);
  }
  return header + kLlc + kIpAndUdp + frame.length + cipherBytes(frame.encryption);
}

/// Returns the frame's length; `fields` gets its beginning.
std::int32_t addFrame(Fields& fields, CaptureLink link, const AirFrame& frame) {
  const unsigned packetType = frame.destination[0] == 1 ? 2 : 1;
  constexpr std::int32_t kCheckSequence = 4;
  switch (link) {
    case CaptureLink::ethernet:
      fields.all(frame.destination).all(frame.source).big16(0x0800);
      break;
    case CaptureLink::cooked1:
      fields.big16(packetType).big16(1).big16(6).all(frame.source).big16(0).big16(0x0800);
      break;
    case CaptureLink::cooked2:
      fields.big16(0x0800)
          .big16(0)
          .big16(0)
          .big16(2)
          .big16(1)
          .byte(packetType)
          .byte(6)
          .all(frame.source)
          .big16(0);
      break;
    case CaptureLink::rawIp:
      break;
    case CaptureLink::wifi:
      return addWifi(fields, frame);
    case CaptureLink::radiotap:
      // The fields are flags (with a frame check sequence) and the rate.
      fields.byte(0).byte(0).little16(10).little32(6).byte(0x10).byte(2);
      return 10 + addWifi(fields, frame) + kCheckSequence;
    case CaptureLink::ppi:
      // One field, 802.11-Common: time, flags (with a frame check sequence), rate, channel, signal.
      fields.byte(0).byte(0).little16(32).little32(105).little16(2).little16(20).little32(0).little32(0);
      fields.little16(1).little16(2).little32(0).little32(0);
      return 32 + addWifi(fields, frame) + kCheckSequence;
  }
  const auto header = static_cast<std::int32_t>(fields.bytes.size());
  addDatagram(fields, frame);
  return header + kIpAndUdp + frame.length;
}

void put(std::ofstream& file, const Bytes& bytes) {
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace

CaptureFile::CaptureFile(const std::string& path, CaptureLink link, bool asPcapng)
    : file_(path, std::ios::binary), link_(link), asPcapng_(asPcapng) {
  constexpr std::uint32_t kSnapLength = 65535;
  Fields head;
  if (asPcapng_) {
    // Section header, and an interface whose times are in microseconds.
    head.little32(0x0A0D0D0A).little32(28).little32(0x1A2B3C4D).little16(1).little16(0);
    head.little32(0xffffffff).little32(0xffffffff).little32(28);
    head.little32(1).little32(20).little16(linkType(link)).little16(0).little32(kSnapLength).little32(20);
  } else {
    head.little32(0xa1b2c3d4).little16(2).little16(4).little32(0).little32(0).little32(kSnapLength);
    head.little32(linkType(link));
  }
  put(file_, head.bytes);
}

void CaptureFile::write(const AirFrame& frame) {
  constexpr std::int64_t kEpochUs = 1'700'000'000'000'000;
  const auto time = static_cast<std::uint64_t>(kEpochUs + frame.timeUs);
  Fields kept;
  const auto length = static_cast<std::uint32_t>(addFrame(kept, link_, frame));
  kept.bytes.resize(std::min<std::size_t>(kKept, length));
  const auto size = static_cast<std::uint32_t>(kept.bytes.size());
  Fields record;
  if (asPcapng_) {
    const std::uint32_t padded = (size + 3) / 4 * 4;
    record.little32(6).little32(32 + padded).little32(0).little32(time >> 32U).little32(time & 0xffffffffU);
    record.little32(size).little32(length).all(kept.bytes);
    record.bytes.resize(28 + padded);
    record.little32(32 + padded);
  } else {
    record.little32(time / 1'000'000)
        .little32(time % 1'000'000)
        .little32(size)
        .little32(length)
        .all(kept.bytes);
  }
  put(file_, record.bytes);
}

bool CaptureFile::close() {
  file_.close();
  return file_.good();
}

}  // namespace zor::simulator
