#pragma once

#include "ZOR/ZorSuite.h"
#include "cli/ProvisionPlan.h"

namespace zor::cli {

/// How many datagrams each channel must have sent before a module can have heard the packet whole.
class PacketFrames {
 public:
  /// `payload` is what is sent, which may differ from the plan's in the append bytes.
  PacketFrames(const ProvisionPlan& plan, const Payload& payload);

  /// True once a channel has sent its packet whole. Both channels send the bytes in the same order, so a
  /// module that puts together what it hears of both has nothing whole earlier either.
  bool sentWhole(const ZorRunReport& report) const;

 private:
  std::int64_t multicast_ = 0;  ///< 0: the channel does not carry the packet.
  std::int64_t broadcast_ = 0;  ///< Likewise.
};

}  // namespace zor::cli
