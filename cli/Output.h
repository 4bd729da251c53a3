#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/ExitCode.h"
#include "cli/JsonText.h"
#include "cli/LiveLine.h"

namespace zor::cli {

class Interrupt;
struct CommonOptions;

/// What a command prints on stdout: lines of text, or with `--json` one JSON object per line. On a terminal,
/// text may end in a live line that is redrawn in place, unless log lines are shown too or the terminal
/// cannot move its cursor (TERM=dumb).
///
/// A stdout whose reader has closed it is no error: what is printed afterwards is dropped. While a reader
/// does not keep up, printing waits for it; once `interrupt` is raised, what it does not take within half a
/// second is dropped; the same holds for stderr. Any other error is reported once on stderr and makes
/// `exitCode` a failure. For one thread.
class Output {
 public:
  /// `interrupt` outlives this.
  Output(const CommonOptions& options, const Interrupt& interrupt);
  ~Output() { clearLive(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// True when live lines are shown.
  bool isLive() const { return live_; }

  /// True without `--json`.
  bool isText() const { return !json_; }

  /// True once nothing more can be printed on stdout: an error came, or its reader has closed it.
  bool isGone() const;

  /// Blocks until the reader of stdout has closed it or an interrupt came. Any thread.
  void waitWhileUseful() const;

  /// The exit code of a command that found no other problem: a failure when stdout could not be written.
  ExitCode exitCode() const;

  /// The exit code of a command that a signal stopped before it was done.
  ExitCode stoppedCode() const;

  /// Prints `text`, which is escaped already, or with JSON `event`.
  void report(std::string_view text, const Json& event);

  /// Prints `event`, followed by the key "time", with JSON and nothing otherwise.
  void reportJson(const Json& event);

  /// Prints `text` without JSON and nothing otherwise.
  void reportText(std::string_view text);

  /// Redraws the live line, escaped already and cut at the terminal's width; does nothing when lines are not
  /// live.
  void showLive(std::string_view text);

  /// Likewise, with a bar of which `share`, 0 to 1, is filled in what the width leaves after `text`.
  void showLive(std::string_view text, double share);

  /// Clears the live line and prints one line on stderr, with JSON too.
  void complain(std::string_view text);

 private:
  void clearLive();
  void write(std::string_view text);
  bool waitForClosedStdout(int waitMs) const;

  const Interrupt& interrupt_;
  bool json_;
  bool live_;
  LiveLine liveLine_;
  bool gone_ = false;        ///< Nothing more can be printed.
  bool stderrGone_ = false;  ///< Nothing more can be printed on stderr.
  bool failed_ = false;      ///< Stdout had an error other than a closed reader.
};

/// The columns of the terminal on stdout; 80 when there is none.
std::size_t terminalWidth();

}  // namespace zor::cli
