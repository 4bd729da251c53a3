#include "cli/KnownPaces.h"

#include "ZOR/ZorSuite.h"

namespace zor::cli {

const std::vector<receiver::KnownPace>& knownPaces() {
  // Where the intervals are among the pacing values.
  constexpr std::size_t kMulticastInterval = 1;
  constexpr std::size_t kMulticastPause = 2;
  constexpr std::size_t kBroadcastInterval = 8;
  constexpr std::size_t kBroadcastPause = 9;
  static const std::vector<receiver::KnownPace> kPaces = [] {
    std::vector<receiver::KnownPace> paces;
    for (const ZorPace& pace : kZorPaces) {
      paces.push_back({pace.name, pace.values[kMulticastInterval], pace.values[kMulticastPause],
                       pace.values[kBroadcastInterval], pace.values[kBroadcastPause]});
    }
    return paces;
  }();
  return kPaces;
}

}  // namespace zor::cli
