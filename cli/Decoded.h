#pragma once

#include <cstdint>
#include <vector>

#include "cli/JsonText.h"
#include "receiver/analysis/Report.h"

namespace zor::cli {

/// All that a capture said, with the events that say it in JSON.
struct Decoded {
  receiver::CaptureReport report;
  std::int64_t start = 0;     ///< Time of the capture's first frame, microseconds.
  bool showSecrets = false;   ///< Pictures may hold what credentials can be read from.
  Json started;               ///< The event.
  std::vector<Json> senders;  ///< The events, as in the report.
  Json finished;              ///< The event.
};

}  // namespace zor::cli
