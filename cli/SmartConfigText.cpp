#include "cli/SmartConfigText.h"

#include "ZOR/ZorSuite.h"

namespace zor::cli {
namespace {

/// Which frame found no socket, channel first.
std::string frameName(std::int32_t status) {
  switch (status) {
    case kZorMulticastSyncFailed:
      return "the multicast channel found no socket for a sync frame";
    case kZorMulticastDataFailed:
      return "the multicast channel found no socket for a data frame";
    case kZorMixedMarkerFailed:
      return "the multicast channel found no socket for a mixed-in version 3 marker";
    case kZorMixedFrameFailed:
      return "the multicast channel found no socket for a mixed-in version 3 frame";
    case kZorBroadcastSync1Failed:
      return "the broadcast channel found no socket for its first sync frame";
    case kZorBroadcastSync2Failed:
      return "the broadcast channel found no socket for its second sync frame";
    case kZorBroadcastSync3Failed:
      return "the broadcast channel found no socket for its third sync frame";
    case kZorBroadcastValueFailed:
      return "the broadcast channel found no socket for a value frame";
    case kZorBroadcastPositionFailed:
    default:  // There is no other code.
      return "the broadcast channel found no socket for a position frame";
  }
}

}  // namespace

std::string explainSmartConfig(std::int32_t status) {
  return frameName(status) + " (" + std::to_string(status) +
         "): raise 'ulimit -n' or close other programs, and check that this user may open and broadcast on "
         "UDP sockets";
}

}  // namespace zor::cli
