#pragma once

#include <poll.h>

#include <array>
#include <cstdint>
#include <string>

#include "receiver/capture/FrameSource.h"
#include "receiver/decoder/Decoder.h"
#include "receiver/module/ModuleServer.h"
#include "receiver/module/VirtualModule.h"

namespace zor::receiver {

/// A virtual module from the start of its run() to the end: one loop that waits for frames, requests, the
/// download, timers and the stop.
class ModuleLife {
 public:
  using Instant = ModuleServer::Instant;

  /// The arguments outlive this object. `pairs` say which module this is, see ModuleServer. `stopEvent`
  /// becomes readable when the module is stopped.
  ModuleLife(const VirtualModuleOptions& options, std::string pairs, ModuleServer& server,
             const ModuleEventHandler& onEvent, int stopEvent);

  /// See VirtualModule::run.
  std::string run();

 private:
  enum Source { stopped, frames, requests, download };
  static constexpr std::size_t kSources = 4;

  std::string start();
  std::string checkInterface(Instant now);
  void wait();
  std::string turn();
  int millisecondsToWait() const;
  bool isReadable(Source source) const { return sources_[source].revents != 0; }

  std::string hearFrames();
  void hear(const Observation& observation);
  void judge(Credentials credentials);
  void reportFrames(Instant now);

  const VirtualModuleOptions& options_;
  const std::string pairs_;
  const ModuleEventHandler& onEvent_;
  const int stopEvent_;
  std::array<pollfd, kSources> sources_{};

  Instant nextInterfaceCheck_{};

  FrameSource frames_;
  Decoder decoder_;
  std::int64_t latestFrameMicroseconds_ = 0;
  std::uint64_t framesHeard_ = 0;
  std::uint64_t framesReported_ = 0;
  Instant nextFramesReport_{};

  ModuleServer& server_;
  bool isJoining_ = false;  ///< Accepted credentials were decoded since the latest turn.
};

}  // namespace zor::receiver
