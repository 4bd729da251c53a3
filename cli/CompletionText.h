#pragma once

#include <cstdint>
#include <string>

#include "cli/JsonText.h"
#include "receiver/analysis/Report.h"

namespace zor::cli {

/// A moment of a capture that starts at `start`, both in microseconds, as seconds from there.
double secondsSince(std::int64_t start, std::int64_t timeMicroseconds);

/// What is shown of credentials that were heard whole: a line, and the event's keys.
struct CompletionText {
  std::string text;
  Json event;
};

/// Shows credentials only if `showSecrets`, else their lengths and a masked form. `address` is their
/// sender's, `start` the capture's first moment.
CompletionText describe(const receiver::Completion& completion, const std::string& address,
                        std::int64_t start, bool showSecrets);

}  // namespace zor::cli
