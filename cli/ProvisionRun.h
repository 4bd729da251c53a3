#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/ClockWatch.h"
#include "cli/Ending.h"
#include "cli/FailedSends.h"
#include "cli/Interrupt.h"
#include "cli/NewModules.h"
#include "cli/Output.h"
#include "cli/PacketFrames.h"
#include "cli/ProvisionPlan.h"
#include "cli/ProvisionProgress.h"

namespace zor::cli {

/// One provisioning run: asks which modules are there already, sends, listens on for a while, and reports
/// what happens. The run's limits are its own: it gives the library a time-out that never comes, because with
/// it the listener would end.
class ProvisionRun {
 public:
  /// All three outlive the run.
  ProvisionRun(const ProvisionPlan& plan, const Interrupt& interrupt, Output& output);

  /// Blocks until the run and its workers have ended. Returns how the run ended; throws `RunFailure` when it
  /// could not start.
  Ending run();

 private:
  using Clock = std::chrono::steady_clock;

  void openListener();
  void namePort();
  void reportStart();
  void findEarlierModules();
  void startSenders();
  void send();
  void stopSenders();
  void linger();
  void stop();
  void follow(std::chrono::seconds phase, bool sending);
  void look(bool sending, Clock::duration left, std::chrono::seconds phase);
  void wait(std::chrono::milliseconds limit);
  void reportFailedChannel(const ZorRunReport& report);

  bool enoughFound() const;
  bool packetSentWhole();
  std::string problem();
  Ending ending();

  const ProvisionPlan& plan_;
  const Interrupt& interrupt_;
  Output& output_;
  ProvisionProgress progress_;
  FailedSends failedMulticasts_{"a multicast frame"};
  FailedSends failedBroadcasts_{"a broadcast frame"};
  std::shared_ptr<NewModules> modules_;
  ZorSuite suite_;
  std::int32_t port_ = 0;     ///< The UDP port that the listener is bound to.
  Payload payload_;           ///< The plan's, with the port in the append bytes where modules need it.
  PacketFrames frames_;       ///< Of the packet.
  bool isSending_ = false;    ///< The senders were started; before, the report is another run's.
  std::int32_t failure_ = 0;  ///< The status of the channel that failed last; 0 when none has.
  bool interrupted_ = false;  ///< A signal ended the run before all expected modules were found.
  Clock::time_point start_;   ///< When the senders were started.
  ClockWatch clocks_;
};

}  // namespace zor::cli
