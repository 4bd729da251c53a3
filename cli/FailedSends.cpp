#include "cli/FailedSends.h"

#include "cli/SystemErrorText.h"

namespace zor::cli {

void FailedSends::look(std::int64_t failed, const ZorSystemError& error, Output& output) {
  if (said_ || failed == 0 || error.number == 0) return;
  said_ = true;
  const std::string problem = what_ + " could not be sent: " + explainSendError(error.number);
  output.complain(problem);
  output.reportJson({{"event", "send_failed"}, {"error", error.number}, {"problem", problem}});
}

}  // namespace zor::cli
