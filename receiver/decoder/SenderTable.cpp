#include "receiver/decoder/SenderTable.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zor::receiver {
namespace {

/// In frames: a quarter of a second among 400 strangers' frames a second.
constexpr double kHalfLife = 96;

/// By this the unit grows with each frame.
const double kGrowth = std::exp2(1 / kHalfLife);

/// A larger unit goes back to 1: with it all points, of which the oldest become 0.
constexpr double kMaxUnit = 0x1p500;

/// After this many frames a phone has shown something of its packet.
constexpr std::uint8_t kFruitless = 255;

// Prices of a record, in points of its sender: a newcomer needs half as many again, eight times as many where
// there is something to lose, and hardly any where a record came to nothing.
constexpr double kPrice = 1.5;
constexpr double kPriceOfPromise = 8;
constexpr double kPriceOfFruitless = 1.0 / 256;

}  // namespace

SenderTable::SenderTable() {
  for (std::size_t i = 0; i < kRemembered; ++i) silence_[i] = static_cast<std::uint8_t>(kSenders - 1 - i);
}

void SenderTable::growUnit() {
  unit_ *= kGrowth;
  if (unit_ <= kMaxUnit) return;
  for (Sender& sender : senders_) sender.points /= unit_;
  unit_ = 1;
}

std::size_t SenderTable::find(const MacAddress& address) const {
  for (std::size_t place = 0; place < count_; ++place) {
    const void* tag = std::memchr(&tags_[place], address.back(), count_ - place);
    if (tag == nullptr) break;
    place = static_cast<std::size_t>(static_cast<const std::uint8_t*>(tag) - tags_.data());
    if (senders_[place].address == address) return place;
  }
  return kSenders;
}

/// Takes a free record, or else the place of the sender that has been silent longest.
std::size_t SenderTable::add(const MacAddress& address) {
  const std::size_t place = count_ < kRecords ? count_ : silence_.back();
  count_ = std::max(count_, place + 1);
  senders_[place] = Sender{address};
  tags_[place] = address.back();
  return place;
}

void SenderTable::count(std::size_t place) {
  Sender& sender = senders_[place];
  sender.points += unit_;
  if (sender.heard < kFruitless) ++sender.heard;
  if (place < kRecords) {
    heard_.set(place);
  } else {
    auto* const first = silence_.data();
    auto* const at = static_cast<std::uint8_t*>(std::memchr(first, static_cast<int>(place), kRemembered));
    std::rotate(first, at, at + 1);
  }
}

double SenderTable::price(const Sender& sender) {
  if (sender.isPromising) return sender.points * kPriceOfPromise;
  return sender.points * (sender.heard >= kFruitless ? kPriceOfFruitless : kPrice);
}

void SenderTable::findCheapest() {
  const auto isCheaper = [](const Sender& a, const Sender& b) { return price(a) < price(b); };
  const Sender* const first = senders_.data();
  cheapest_ = static_cast<std::size_t>(std::min_element(first, first + kRecords, isCheaper) - first);
}

/// The sender at this place gets this record, and the one that had it is remembered.
void SenderTable::giveRecord(std::size_t place, std::size_t record) {
  std::swap(senders_[place], senders_[record]);
  std::swap(tags_[place], tags_[record]);
  senders_[record].heard = 0;
  heard_.set(record);
}

}  // namespace zor::receiver
