#include "cli/Ending.h"

namespace zor::cli {

Json finishedEvent(const Ending& ending) {
  const bool ok = ending.problem.empty();
  Json event = {{"event", "finished"}, {"ok", ok}};
  event.update(ending.details);
  if (!ok) event["problem"] = ending.problem;
  return event;
}

ExitCode finish(Output& output, const Ending& ending) {
  if (!ending.summary.empty()) output.reportText(ending.summary);
  output.reportJson(finishedEvent(ending));
  if (ending.problem.empty()) return output.exitCode();
  output.complain(ending.problem);
  return ending.stopped ? output.stoppedCode() : ExitCode::failure;
}

}  // namespace zor::cli
