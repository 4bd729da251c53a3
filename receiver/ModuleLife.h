#pragma once

#include <poll.h>

#include <array>
#include <cstdint>
#include <string>

#include "receiver/Decoder.h"
#include "receiver/FrameSource.h"
#include "receiver/ModuleServer.h"
#include "receiver/VirtualModule.h"

namespace zor::receiver {

/// Everything a virtual module has between the start of its run() and the end: one loop that waits for
/// frames, requests, the download, timers and the stop.
class ModuleLife {
 public:
  using Instant = ModuleServer::Instant;

  /// The arguments outlive this object.
  /// \param pairs which module this is, see ModuleServer.
  /// \param stopEvent readable once the module is stopped.
  ModuleLife(const VirtualModuleOptions& options, std::string pairs,
             const VirtualModule::EventHandler& onEvent, int stopEvent);

  /// See VirtualModule::run.
  std::string run();

 private:
  enum Source { kStop, kFrames, kRequests, kDownload, kSourceCount };

  std::string start();
  void reportStart();
  std::string checkInterface(Instant now);
  void wait();
  std::string turn();
  int millisecondsToWait() const;
  bool isReadable(Source source) const { return sources_[source].revents != 0; }

  std::string hearFrames();
  void hear(const Observation& observation);
  void judge(Credentials credentials);
  void announce(Instant now);
  void reportFrames(Instant now);

  const VirtualModuleOptions& options_;
  const std::string pairs_;
  const VirtualModule::EventHandler& onEvent_;
  const int stopEvent_;
  std::array<pollfd, kSourceCount> sources_{};

  Instant nextInterfaceCheck_{};

  FrameSource frames_;
  Decoder decoder_;
  std::int64_t latestFrameMicroseconds_ = 0;
  std::uint64_t framesHeard_ = 0;
  std::uint64_t framesReported_ = 0;
  Instant nextFramesReport_{};

  ModuleServer server_;
  bool isJoining_ = false;  ///< Accepted credentials were decoded since the latest turn.
  std::uint16_t notificationPort_ = 0;
  int notificationsLeft_ = 0;
  bool isAnnounced_ = false;  ///< A notification has left since the module joined last.
  Instant nextNotification_{};
};

}  // namespace zor::receiver
