#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "ZOR/ZorSuite.h"
#include "cli/FoundModules.h"
#include "cli/Interrupt.h"
#include "cli/LogLines.h"
#include "cli/Output.h"
#include "cli/Pace.h"
#include "cli/Payload.h"

namespace zor::cli {

/// Which frames a run sends.
enum class SendMode { version5, version3, mixed };

/// What a provisioning run is to do; checked already.
struct ProvisionPlan {
  Payload payload;
  bool appendGiven = false;  ///< The user chose the append bytes, so they do not name the port.
  SendMode mode = SendMode::version5;
  std::optional<Pace> pace;
  std::chrono::seconds timeout{100};
  std::size_t expected = 1;  ///< The run ends once so many different modules are there.
};

/// One provisioning run: listens, sends, shows how it goes, and says how it ended.
class ProvisionRun {
 public:
  /// All four outlive the run.
  ProvisionRun(const ProvisionPlan& plan, const Interrupt& interrupt, const LogLines& logLines,
               Output& output);

  /// Blocks until the run has ended and its workers too. Returns an `ExitCode`; throws `RunFailure` when the
  /// run could not start.
  int run();

 private:
  using Clock = std::chrono::steady_clock;

  void openListener();
  void namePort();
  void startSenders();
  void follow();
  void stop();
  void tellStart();
  void tellProgress();
  void tellFailedChannel();
  int tellEnd();

  bool enoughFound() const { return modules_->count() >= plan_.expected; }
  std::string problem() const;

  const ProvisionPlan& plan_;
  const Interrupt& interrupt_;
  const LogLines& logLines_;
  Output& output_;
  std::shared_ptr<FoundModules> modules_;
  ZorSuite suite_;
  std::int32_t port_ = 0;
  std::vector<std::uint8_t> append_;
  std::int32_t failure_ = 0;  ///< The status of the channel that failed last, 0 without one.
  bool started_ = false;      ///< A sender was there when the run began.
  bool interrupted_ = false;
  Clock::time_point start_;
  Clock::time_point nextProgress_;
};

}  // namespace zor::cli
