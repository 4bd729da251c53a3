#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "cli/Output.h"
#include "receiver/module/ModuleEvent.h"

namespace zor::cli {

/// Shows what happens to a virtual module: frames and download progress in one live line on a terminal, the
/// rest as lines. Of search requests, which come many at a time, the first is shown at once, those of the
/// next two seconds are summed up.
class ModuleView {
 public:
  /// `interface` is the module's; pass phrases are shown only if `showSecrets`; `output` outlives this.
  ModuleView(std::string interface, bool showSecrets, Output& output)
      : interface_(std::move(interface)), showSecrets_(showSecrets), output_(output) {}

  void show(const receiver::ModuleEvent& event);

  /// Shows how many search requests came since they were last shown, if any did.
  void sumUpRequests();

 private:
  void showKind(const receiver::ModuleStarted& event);
  void showKind(const receiver::FramesHeard& event);
  void showKind(const receiver::CredentialsDecoded& event);
  void showKind(const receiver::ModuleAnnounced& event);
  void showKind(const receiver::InfoRequested& event);
  void showKind(const receiver::UpgradeRequested& event);
  void showKind(const receiver::DownloadProgress& event);
  void showKind(const receiver::DownloadDone& event);
  void showKind(const receiver::DownloadFailed& event);
  void showKind(const receiver::SendFailed& event);

  std::string interface_;
  bool showSecrets_;
  Output& output_;
  int requests_ = 0;         ///< Search requests not shown yet.
  std::string requestFrom_;  ///< Where the last of them came from.
  std::chrono::steady_clock::time_point nextRequestsLine_;
  std::chrono::steady_clock::time_point nextFramesLine_;
  int nextPercent_ = 0;
};

}  // namespace zor::cli
