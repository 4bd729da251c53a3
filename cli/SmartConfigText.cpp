#include "cli/SmartConfigText.h"

#include "ZOR/ZorSuite.h"
#include "cli/SystemErrorText.h"

namespace zor::cli {
namespace {

/// Which frame had no socket, channel first.
std::string frameName(std::int32_t status) {
  switch (status) {
    case kZorMulticastSyncFailed:
      return "the multicast channel could not open a socket for a sync frame";
    case kZorMulticastDataFailed:
      return "the multicast channel could not open a socket for a data frame";
    case kZorMixedMarkerFailed:
      return "the multicast channel could not open a socket for a mixed-in version 3 marker";
    case kZorMixedFrameFailed:
      return "the multicast channel could not open a socket for a mixed-in version 3 frame";
    case kZorBroadcastSync1Failed:
      return "the broadcast channel could not open a socket for its first sync frame";
    case kZorBroadcastSync2Failed:
      return "the broadcast channel could not open a socket for its second sync frame";
    case kZorBroadcastSync3Failed:
      return "the broadcast channel could not open a socket for its third sync frame";
    case kZorBroadcastValueFailed:
      return "the broadcast channel could not open a socket for a value frame";
    case kZorBroadcastPositionFailed:
    default:  // There is no other code.
      return "the broadcast channel could not open a socket for a position frame";
  }
}

}  // namespace

std::string explainSmartConfig(std::int32_t status, std::int32_t error) {
  return frameName(status) + " (" + std::to_string(status) + "): " + explainSocketError(error);
}

}  // namespace zor::cli
