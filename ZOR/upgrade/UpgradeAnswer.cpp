#include "ZOR/upgrade/UpgradeAnswer.h"

#include <algorithm>
#include <cstdlib>

#include "ZOR/protocol/RequestFormats.h"
#include "ZOR/upgrade/UpgradeStatus.h"

namespace zor {
namespace {

/// The decimal number that `text` begins with, 0 without one, cut to 32 bits.
std::int32_t toNumber(const char* text) {
  return static_cast<std::int32_t>(
      std::clamp<long long>(std::strtoll(text, nullptr, 10), INT32_MIN, INT32_MAX));
}

}  // namespace

bool UpgradeAnswer::open(char* line, std::int32_t length) {
  return reader_.open(line, length, kResponseTag);
}

std::int32_t UpgradeAnswer::applyTo(std::int32_t status) {
  const std::int32_t id = toNumber(reader_.id());
  std::int32_t number = 0;
  if (id == kUpgradeId && findNumber("ret", number)) return number < 0 ? number : kZorUpgradeAccepted;
  if (id == kUpgradeStatusId && findNumber("status", number)) return std::max(number, kZorUpgradeAccepted);
  return status;
}

bool UpgradeAnswer::findNumber(std::string_view key, std::int32_t& number) {
  while (reader_.nextPair()) {
    if (reader_.key() != key) continue;
    number = toNumber(reader_.value());
    return true;
  }
  return false;
}

}  // namespace zor
