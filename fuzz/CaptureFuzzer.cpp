#include <cstdio>

#include "fuzz/Fuzz.h"
#include "receiver/analysis/Analysis.h"
#include "receiver/analysis/Verdict.h"
#include "receiver/capture/CaptureReader.h"

using namespace zor::receiver;

namespace {

constexpr std::size_t kFramesKept = 20;

void requireSound(const LegReport& leg) {
  require(leg.bytesKnown >= 0 && leg.bytesKnown <= 100 && leg.bytesTotal <= 100);
  require(leg.bytesTotal == 0 || leg.bytesKnown <= leg.bytesTotal);
  require(leg.log.size() <= kFramesKept && (leg.leftOut == 0 || leg.log.size() == kFramesKept));
  for (const LoggedFrame& frame : leg.log) require(frame.offset >= -1 && frame.offset < 100);
  for (const ChannelReport& channel : leg.channels) {
    require(!channel.loss || (*channel.loss >= 0 && *channel.loss <= 1));
    require(!channel.intervalMs || *channel.intervalMs >= 0);
    require(!channel.pauseMs || *channel.pauseMs >= 0);
  }
}

}  // namespace

/// Any file is read to its end or to a problem in one line, and whatever was in it gets a verdict.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  std::FILE* const file = fmemopen(const_cast<std::uint8_t*>(bytes), size, "rb");
  require(file != nullptr);
  CaptureReader reader;
  if (!reader.openStream(file).empty()) return 0;
  Analysis analysis(kFramesKept);
  auto status = CaptureReader::Status::more;
  while (status == CaptureReader::Status::more)
    status = reader.read([&](const CapturedFrame& frame) { analysis.observe(frame); });
  require((status == CaptureReader::Status::failed) != reader.problem().empty());
  require(reader.problem().find('\n') == std::string::npos);

  const CaptureReport report = analysis.report();
  require(report.frames == analysis.frames() && report.senders.size() <= Analysis::kMaxSenders);
  require(!judgeEmpty(report).text.empty());
  for (const SenderReport& sender : report.senders) {
    require(!sender.legs.empty() && !judge(sender, {}).empty());
    for (const LegReport& leg : sender.legs) requireSound(leg);
  }
  return 0;
}
