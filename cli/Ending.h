#pragma once

#include <string>

#include "cli/ExitCode.h"
#include "cli/Output.h"

namespace zor::cli {

/// How a command ended. Both texts are escaped already.
struct Ending {
  std::string problem;            ///< One line: why it failed and what to try. Empty when it did not fail.
  bool stopped = false;           ///< The problem is that a signal came.
  std::string summary;            ///< The last line of text; none when empty.
  Json details = Json::object();  ///< The keys of the "finished" event between "ok" and "problem".
};

/// The "finished" event of an ending.
Json finishedEvent(const Ending& ending);

/// Ends a command: the summary or the "finished" event on stdout, the problem on stderr.
ExitCode finish(Output& output, const Ending& ending);

}  // namespace zor::cli
