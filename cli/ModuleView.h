#pragma once

#include <chrono>

#include "cli/Output.h"
#include "receiver/VirtualModule.h"

namespace zor::cli {

/// Shows what happens to a virtual module: frames and download progress in one live line on a terminal, the
/// rest as lines.
class ModuleView {
 public:
  explicit ModuleView(Output& output) : output_(output) {}

  void show(const receiver::ModuleEvent& event);

 private:
  void showFrames(const receiver::ModuleEvent& event);
  void showCredentials(const receiver::ModuleEvent& event, const char* name, const char* text);
  void showDownload(const receiver::ModuleEvent& event);

  Output& output_;
  std::chrono::steady_clock::time_point nextFramesLine_;
  int nextPercent_ = 0;
};

}  // namespace zor::cli
