#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "ZOR/ZorSuite.h"
#include "cli/Output.h"

namespace zor::cli {

/// Says at once that sending fails, and why: the first time only, since the cause rarely changes.
class FailedSends {
 public:
  /// `what` is sent, such as "a multicast frame".
  explicit FailedSends(std::string what) : what_(std::move(what)) {}

  /// Looks at a report's number of failed sends and its latest error; says the first failure on stderr and as
  /// the event "send_failed".
  void look(std::int64_t failed, const ZorSystemError& error, Output& output);

 private:
  std::string what_;
  bool said_ = false;
};

}  // namespace zor::cli
