#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "receiver/decoder/Credentials.h"
#include "receiver/decoder/Decoder.h"

namespace zor::receiver {

/// Everything the module needs is open. Comes once, before all other events.
struct ModuleStarted {};

/// Frames were heard. Comes at most ten times a second.
struct FramesHeard {
  std::uint64_t frames = 0;  ///< Broadcast and multicast frames heard so far.
  DecoderProgress progress;
};

/// Credentials were decoded.
struct CredentialsDecoded {
  Credentials credentials;
  bool accepted = false;     ///< True when the module joins, false when they are not those of its network.
  std::uint64_t frames = 0;  ///< Broadcast and multicast frames heard so far.
};

/// The first notification since the module joined was sent.
struct ModuleAnnounced {
  std::uint16_t port = 0;  ///< UDP port that it was sent to.
  std::string line;        ///< Without its line end.
};

/// A search request was answered.
struct InfoRequested {
  std::string from;  ///< "address:port".
};

/// An upgrade was commanded. Does not come for repetitions, nor for a refusal within 2 s of another.
struct UpgradeRequested {
  std::string url;  ///< Empty when refused.
  int result = 0;   ///< The ret value of the answer, see ModuleRequests.h: 0, or negative when refused.
};

/// More of an upgrade's file has arrived.
struct DownloadProgress {
  int percent = 0;  ///< 0 to 99.
};

/// An upgrade's file is complete.
struct DownloadDone {
  std::string path;  ///< Empty when the file was dropped.
};

/// An upgrade's file could not be fetched or stored.
struct DownloadFailed {
  std::string reason;
  int status = 0;  ///< What the status of the upgrade is from now on, see ModuleRequests.h.
};

/// A line could not be sent.
struct SendFailed {
  std::string reason;  ///< The system's.
};

/// Something that happened to a virtual module. Texts hold no control characters, except those of
/// credentials.
using ModuleEvent =
    std::variant<ModuleStarted, FramesHeard, CredentialsDecoded, ModuleAnnounced, InfoRequested,
                 UpgradeRequested, DownloadProgress, DownloadDone, DownloadFailed, SendFailed>;

/// Called on the module's thread, one call at a time; must not block long.
using ModuleEventHandler = std::function<void(const ModuleEvent&)>;

}  // namespace zor::receiver
