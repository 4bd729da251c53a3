#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "cli/Output.h"
#include "receiver/VirtualModule.h"

namespace zor::cli {

/// Shows what happens to a virtual module: frames and download progress in one live line on a terminal, the
/// rest as lines.
class ModuleView {
 public:
  /// `interface` is the module's; `output` outlives this.
  ModuleView(std::string interface, Output& output) : interface_(std::move(interface)), output_(output) {}

  void show(const receiver::ModuleEvent& event);

 private:
  void showFrames(const receiver::ModuleEvent& event);
  void showCredentials(const receiver::ModuleEvent& event, const char* name, const char* text);
  void showDownload(const receiver::ModuleEvent& event);

  std::string interface_;
  Output& output_;
  std::chrono::steady_clock::time_point nextFramesLine_;
  int nextPercent_ = 0;
};

}  // namespace zor::cli
