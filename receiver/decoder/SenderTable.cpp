#include "receiver/decoder/SenderTable.h"

#include <algorithm>
#include <cmath>

namespace zor::receiver {
namespace {

/// In frames: half a second of one phone among 400 frames of strangers.
constexpr double kHalfLife = 96;

/// After this many frames a phone has shown something of its packet.
constexpr std::uint32_t kFruitless = 255;

// Premiums on a record, in powers of two: a newcomer needs half as much again, four times as much where there
// is something to lose, and hardly anything where a record came to nothing.
constexpr double kPremium = 0.6;
constexpr double kPremiumOfPromise = 3;
constexpr double kDiscountOfFruitless = -8;

}  // namespace

std::uint64_t SenderTable::keyOf(const MacAddress& address) {
  std::uint64_t key = 0;
  for (const std::uint8_t byte : address) key = key << 8 | byte;
  return key;
}

MacAddress SenderTable::sender(std::size_t record) const {
  MacAddress address{};
  std::uint64_t key = senders_[record].address;
  for (std::size_t i = address.size(); i-- > 0; key >>= 8) address[i] = static_cast<std::uint8_t>(key);
  return address;
}

std::size_t SenderTable::find(std::uint64_t address) const {
  for (std::size_t i = 0; i < count_; ++i) {
    if (senders_[i].address == address) return i;
  }
  return kSenders;
}

/// Of those without a record.
std::size_t SenderTable::longestSilent() const {
  const auto first = senders_.begin() + kRecords;
  const auto now = static_cast<std::uint32_t>(frames_);
  const auto silent = std::max_element(first, senders_.end(), [=](const Sender& a, const Sender& b) {
    return now - a.lastHeard < now - b.lastHeard;
  });
  return static_cast<std::size_t>(silent - senders_.begin());
}

void SenderTable::count(Sender& sender) const {
  const double age = static_cast<double>(frames_) / kHalfLife;
  const double points = std::exp2(sender.worth - age);
  sender.worth = std::log2(points + 1) + age;
  sender.lastHeard = static_cast<std::uint32_t>(frames_);
  sender.heard = std::min(sender.heard + 1, kFruitless);
}

double SenderTable::premium(const Sender& sender, bool isPromising) {
  if (isPromising) return kPremiumOfPromise;
  return sender.heard >= kFruitless ? kDiscountOfFruitless : kPremium;
}

}  // namespace zor::receiver
