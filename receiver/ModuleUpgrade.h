#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "receiver/Download.h"
#include "receiver/ModuleRequests.h"
#include "receiver/VirtualModule.h"

namespace zor::receiver {

/// A module's upgrade: takes commands, knows how far the download is, tells what happens.
class ModuleUpgrade {
 public:
  using Instant = std::chrono::steady_clock::time_point;

  /// Phones repeat a command twice a second until they hear the answer: the same command within this time is
  /// the same upgrade, even if that has ended meanwhile.
  static constexpr std::chrono::seconds kRepetition{2};

  /// \param path where the file goes, see DownloadFile.
  ModuleUpgrade(std::string path, VirtualModule::EventHandler onEvent);

  /// Obeys an upgrade command if it can. \param interface see HttpFetch.
  /// \return the ret value of its answer.
  int command(const ModuleRequest& request, const std::string& interface, Instant now);

  /// The value for the status key: percent of the file that are here, or negative after a failure; 0 before
  /// the first upgrade.
  int status() const;

  /// The id of the command that started the latest upgrade.
  std::int32_t commandId() const { return commandId_; }

  /// Readable when reportChanges() has something to do; -1 for nothing to wait for.
  int descriptor() const { return download_ ? download_->descriptor() : -1; }
  /// Hands over the events of the download.
  void reportChanges();

 private:
  std::string path_;
  VirtualModule::EventHandler onEvent_;
  std::unique_ptr<Download> download_;  ///< The latest; empty before the first.
  std::string url_;
  std::int32_t commandId_ = 0;
  Instant latestCommand_{};
  Instant latestRefusal_{};
};

}  // namespace zor::receiver
