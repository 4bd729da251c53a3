#include "cli/LogLines.h"

#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "ZOR/ZorSuite.h"
#include "cli/Escape.h"
#include "cli/TextWriter.h"

namespace zor::cli {
namespace {

/// The line as it may be shown: without what follows "pass=", since a pass phrase may hold anything.
std::string masked(std::string_view line) {
  constexpr std::string_view kPassPhraseLabel = "pass=";
  const std::size_t label = line.find(kPassPhraseLabel);
  if (label == std::string_view::npos) return printable(line);
  return printable(line.substr(0, label + kPassPhraseLabel.size())) + "***";
}

/// Puts one line, masked already, on stderr unless its reader does not keep up; `dropped` counts the lines
/// that stderr did not take since the last one it took. Any thread.
void show(std::atomic<int>& dropped, const std::string& line) {
  const int missing = dropped.exchange(0);
  const std::string gap = missing == 0 ? "" : "log: " + std::to_string(missing) + " lines dropped\n";
  if (!writeAtOnce(STDERR_FILENO, gap + "log: " + line + "\n")) dropped += missing + 1;
}

}  // namespace

LogLines::LogLines(bool verbose) {
  ZorSetLogSink([verbose, dropped = std::make_shared<std::atomic<int>>(0)](const char* line) {
    if (verbose) show(*dropped, masked(line));
  });
}

}  // namespace zor::cli
