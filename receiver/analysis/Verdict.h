#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "receiver/analysis/Report.h"

namespace zor::receiver {

enum class FindingKind : std::uint8_t {
  complete,          ///< The credentials can be read.
  lengthsChanged,    ///< The base or the overhead moved in the middle of the run.
  crcNeverHolds,     ///< Bytes contradict each other, or the whole packet fails its check.
  syncNeverSeen,     ///< Nothing shows what the lengths mean.
  lengthBaseZero,    ///< Datagrams of no bytes start the cycles.
  multicastMissing,  ///< Broadcasts of a run are there.
  broadcastMissing,  ///< Multicasts of a run are there.
  onlyVersion3,
  tooSparse,     ///< Too many frames are missing for the time that was captured.
  tooShort,      ///< The capture ends before one cycle was heard whole.
  undecided,     ///< None of these explains it.
  heldInBursts,  ///< An access point holds frames back.
  paceUnknown,   ///< The spacing is none of the known ones.
  nothing,       ///< No smart configuration in the capture.
};

/// A name for JSON, such as "crc_never_holds".
const char* nameOf(FindingKind kind);

/// Something that a capture shows.
struct Finding {
  FindingKind kind = FindingKind::undecided;
  std::string text;  ///< One sentence in plain ASCII, without credentials.
};

/// The spacing of a pace that senders are known to use, in milliseconds.
struct KnownPace {
  std::string_view name;
  int multicastInterval = 0;
  int multicastPause = 0;
  int broadcastInterval = 0;
  int broadcastPause = 0;
};

/// The one pace that version 3 has, which no setting changes.
inline constexpr std::string_view kVersion3Pace = "version 3";

/// The pace that fits what a leg shows, kVersion3Pace where only version 3 was heard; nothing when none does
/// or too little was heard.
std::optional<std::string_view> fittingPace(const LegReport& leg, std::span<const KnownPace> paces);

/// What a cipher adds to a frame.
struct Cipher {
  const char* name;
  int bytes;
};

/// The link encryption that, with a length base of `base`, explains the length of sync frames; nothing when
/// none does.
std::optional<Cipher> fittingCipher(const LegReport& leg, std::int32_t syncLength, int base);

/// The length base that nearly all senders use, and all of version 3.
inline constexpr int kUsualBase = 30;

/// The leg that decides about a sender: the first that was complete, else the one with most frames.
const LegReport& mainLeg(const SenderReport& sender);

/// What is to be said about a sender, the verdict first. Never empty.
std::vector<Finding> judge(const SenderReport& sender, std::span<const KnownPace> paces);

/// What is to be said about a capture without senders: what was there instead.
Finding judgeEmpty(const CaptureReport& capture);

}  // namespace zor::receiver
