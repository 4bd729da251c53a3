#include <cstring>
#include <memory>
#include <string>

#include "ZOR/upgrade/UpgradeAnswer.h"
#include "ZOR/upgrade/UpgradeStatus.h"
#include "fuzz/Fuzz.h"

namespace {

constexpr std::size_t kMaxAnswerLength = 512;

/// Requires what must hold for every answer, whatever it says.
void requireSoundStep(const std::string& line, std::int32_t before, std::int32_t after) {
  if (after == before) return;
  require(after < 0 || after >= kZorUpgradeAccepted);
  const bool pairs = line.find('=') != std::string::npos;
  require(after >= 0 || (pairs && line.find("ret") != std::string::npos));
  require(after <= kZorUpgradeAccepted || (pairs && line.find("status") != std::string::npos));
}

}  // namespace

/// The input is answers, separated by line feeds. An upgrade that has ended is followed by another.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string all(reinterpret_cast<const char*>(bytes), size);
  zor::UpgradeAnswer answer;
  std::int32_t status = kZorUpgradeCommandSent;
  for (std::size_t at = 0; at < all.size();) {
    const std::size_t end = std::min(all.find('\n', at), all.size() - 1) + 1;
    const std::string line = all.substr(at, std::min(end - at, kMaxAnswerLength));
    at = end;

    const auto buffer = std::make_unique<char[]>(line.size() + 1);
    std::memcpy(buffer.get(), line.c_str(), line.size() + 1);
    if (!answer.open(buffer.get(), static_cast<std::int32_t>(line.size()))) {
      require(std::memcmp(buffer.get(), line.c_str(), line.size() + 1) == 0);
      continue;
    }
    const std::int32_t next = answer.applyTo(status);
    requireSoundStep(line, status, next);
    const bool over = next < 0 || next >= kZorUpgradeDone;
    status = over ? kZorUpgradeCommandSent : next;
  }
  return 0;
}
