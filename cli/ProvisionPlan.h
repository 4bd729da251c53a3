#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "cli/Pace.h"
#include "cli/Payload.h"

namespace zor::cli {

/// Which frames a run sends.
enum class SendMode { version5, version3, mixed };

/// What a provisioning run is to do. All values are checked already.
struct ProvisionPlan {
  Payload payload;
  bool appendGiven = false;  ///< The user chose the append bytes, so they do not name the port.
  SendMode mode = SendMode::version5;
  std::optional<Pace> pace;  ///< Empty: the library's default.
  std::chrono::seconds timeout{100};
  std::chrono::seconds linger{10};  ///< How long to listen after the senders.
  std::size_t expected = 1;         ///< The run ends once this many different new modules were found.
  std::string module;               ///< The run ends once this one was found instead; empty: any.
  std::string interface;            ///< Network interface to use; empty: the system's choice.
};

}  // namespace zor::cli
