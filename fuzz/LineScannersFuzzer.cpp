#include <string>

#include "fuzz/Fuzz.h"
#include "tests/support/SlowScanners.h"

/// The first byte says where to start in the line that follows.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 1) return 0;
  const std::string line(reinterpret_cast<const char*>(bytes + 1), size - 1);
  std::size_t at = bytes[0] % (line.size() + 1);
  require(scannersAgree(line, at));
  while (at < line.size()) {
    const std::size_t next = slowKeyValue(line, at).next;
    require(next > at && scannersAgree(line, next));
    at = next;
  }
  return 0;
}
