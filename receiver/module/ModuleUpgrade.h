#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "receiver/download/Download.h"
#include "receiver/module/ModuleEvent.h"
#include "receiver/module/ModuleRequests.h"

namespace zor::receiver {

/// A module's upgrade: takes commands, runs the download, reports its status and its events.
class ModuleUpgrade {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  /// Phones repeat a command twice a second until they hear the answer: the same command within this time is
  /// the same upgrade, even if that has ended meanwhile.
  static constexpr std::chrono::seconds kRepetition{2};

  /// The file goes to `path`, see DownloadFile.
  ModuleUpgrade(std::string path, ModuleEventHandler onEvent);

  /// Obeys an upgrade command if it can. HttpFetch describes `interface`. Returns the ret value of the
  /// answer.
  int command(const ModuleRequest& request, const std::string& interface, Instant now);

  /// The value of the status key: percent of the file that have arrived, or negative after a failure; 0
  /// before the first upgrade.
  int status() const;

  /// The id of the command that started the latest upgrade.
  std::int32_t commandId() const { return commandId_; }

  /// Readable when reportChanges() has something to do; -1 when there is no download.
  int descriptor() const { return download_ ? download_->descriptor() : -1; }
  /// Hands over the events of the download.
  void reportChanges();

 private:
  std::string path_;
  ModuleEventHandler onEvent_;
  std::unique_ptr<Download> download_;  ///< The latest; empty before the first.
  std::string url_;
  std::int32_t commandId_ = 0;
  Instant latestCommand_{};
  Instant latestRefusal_{};
};

}  // namespace zor::receiver
