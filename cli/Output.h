#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace zor::cli {

class Interrupt;
struct CommonOptions;

/// Keeps the keys in the order in which they are given.
using Json = nlohmann::ordered_json;

/// What a command prints on stdout: lines of text, or with `--json` one JSON object a line. On a terminal,
/// text may have a live line below it that is drawn over and over, unless log lines are shown too.
///
/// A stdout that nobody reads any more is no error: what is printed from then on is dropped. So is what a
/// reader that has stopped reading leaves no room for once `interrupt` is raised; till then printing waits
/// for it. Any other error is complained of once, and `exitCode` tells of it. One thread.
class Output {
 public:
  /// `interrupt` outlives this.
  Output(const CommonOptions& options, const Interrupt& interrupt);
  ~Output() { clearLive(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// True when live lines are shown.
  bool isLive() const { return live_; }

  /// True without JSON.
  bool isText() const { return !json_; }

  /// True once stdout took no more.
  bool isGone() const { return gone_; }

  /// The `ExitCode` of a command that did what it was asked for: a failure when stdout could not be written.
  int exitCode() const;

  /// Prints `text`, escaped already, or `event`, whichever form is asked for.
  void report(std::string_view text, const Json& event);

  /// Prints `event` with JSON and nothing otherwise.
  void reportJson(const Json& event);

  /// Prints `text` without JSON and nothing otherwise.
  void reportText(std::string_view text);

  /// Draws the live line anew, cut at the terminal's width; nothing when lines are not live.
  void showLive(std::string_view text);

  /// Prints one line on stderr, with JSON too. The live line is cleared first.
  void complain(std::string_view text);

 private:
  void clearLive();
  void write(std::string_view text);
  bool waitForRoom() const;

  const Interrupt& interrupt_;
  bool json_;
  bool live_;
  bool drawn_ = false;
  bool gone_ = false;
  bool failed_ = false;
};

}  // namespace zor::cli
