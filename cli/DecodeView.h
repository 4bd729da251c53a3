#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/Output.h"
#include "receiver/analysis/Report.h"
#include "receiver/analysis/Verdict.h"

namespace zor::cli {

/// Shows what a capture says: credentials when they are complete, then each sender with its verdict.
/// Credentials are shown only if `showSecrets`, else their lengths and a masked form.
class DecodeView {
 public:
  /// `output` outlives this.
  DecodeView(bool showSecrets, Output& output) : showSecrets_(showSecrets), output_(output) {}

  /// Takes each frame before anything else is shown of it; the first is where times count from.
  void noteStart(std::int64_t timeMicroseconds) { start_ = timeMicroseconds; }

  /// Shows a frame of a run; it carries bytes of the packet.
  void showFrame(std::uint64_t number, const receiver::CapturedFrame& frame);

  void showCompletion(const receiver::CapturedFrame& frame, const receiver::Completion& completion);

  /// Shows the senders. Returns their events.
  std::vector<Json> showSenders(const receiver::CaptureReport& report);

 private:
  Json showSender(const receiver::SenderReport& sender);

  bool showSecrets_;
  Output& output_;
  std::int64_t start_ = 0;
};

/// The last line about a capture.
std::string summaryOf(const receiver::CaptureReport& report);

}  // namespace zor::cli
