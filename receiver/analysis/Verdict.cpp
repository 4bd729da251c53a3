#include "receiver/analysis/Verdict.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace zor::receiver {
namespace {

/// As many broadcasts as this are a run's even where no sync frame shows it.
constexpr std::uint64_t kBroadcastsOfRun = 20;

/// Chance does not produce as many contradictions: a broadcast value given to the wrong position does now and
/// then.
constexpr unsigned kContradictions = 4;

/// Below this loss a run of ordinary length is complete.
constexpr double kSparseLoss = 0.1;

/// Frames of a channel without which its absence proves nothing.
constexpr std::uint64_t kEnoughFrames = 20;

/// From one frame of version 3 to the next.
constexpr int kVersion3IntervalMs = 10;

constexpr double kIntervalTolerance = 2;
constexpr double kPauseTolerance = 20;

std::string seconds(std::int64_t microseconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f s", static_cast<double>(microseconds) / 1e6);
  return text.data();
}

std::string percent(double share) {
  return std::to_string(std::lround(share * 100)) + " %";
}

std::string milliseconds(double ms) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.4g ms", ms);
  return text.data();
}

const ChannelReport& multicast(const LegReport& leg) {
  return leg.channel(ChannelKind::multicast);
}
const ChannelReport& broadcast(const LegReport& leg) {
  return leg.channel(ChannelKind::broadcast);
}
const ChannelReport& version3(const LegReport& leg) {
  return leg.channel(ChannelKind::version3);
}

bool hasBroadcasts(const LegReport& leg) {
  return broadcast(leg).syncLength.has_value() || broadcast(leg).frames >= kBroadcastsOfRun;
}

bool hasMulticasts(const LegReport& leg) {
  return multicast(leg).frames > 0;
}

const LegReport* findLeg(const SenderReport& sender, Leg leg) {
  const auto found = std::ranges::find(sender.legs, leg, &LegReport::leg);
  return found == sender.legs.end() ? nullptr : &*found;
}

/// The largest loss of the channels that were heard.
double worstLoss(const LegReport& leg) {
  double loss = 0;
  for (const ChannelReport& channel : leg.channels) loss = std::max(loss, channel.loss.value_or(0));
  return loss;
}

class Judge {
 public:
  Judge(const SenderReport& sender, std::span<const KnownPace> paces)
      : sender_(sender), leg_(mainLeg(sender)), start_(leg_.firstMicroseconds), paces_(paces) {}

  std::vector<Finding> findings() {
    judgeCompletion();
    judgeLengths();
    judgeBytes();
    judgeSyncs();
    judgeChannels();
    judgeDensity();
    if (findings_.empty()) add(FindingKind::undecided, "not complete, for no reason that the capture shows");
    judgeTimes();
    return std::move(findings_);
  }

 private:
  void add(FindingKind kind, std::string text) { findings_.push_back({kind, std::move(text)}); }
  bool has(FindingKind kind) const {
    return std::ranges::find(findings_, kind, &Finding::kind) != findings_.end();
  }
  bool isComplete() const { return leg_.completion.has_value(); }

  void judgeCompletion() {
    if (!isComplete()) return;
    const Completion& done = *leg_.completion;
    const Credentials& found = done.credentials;
    std::string text = "complete " + seconds(done.timeMicroseconds - start_) +
                       " after its first frame, with frame " + std::to_string(done.frame) + ": version " +
                       std::to_string(static_cast<int>(found.encoding)) + ", SSID of " +
                       std::to_string(found.ssid.size()) + " bytes, pass phrase of " +
                       std::to_string(found.passPhrase.size()) + " bytes; the CRC holds";
    const bool another = std::ranges::any_of(sender_.completions, [&](const Completion& other) {
      return other.credentials.ssid != found.ssid || other.credentials.passPhrase != found.passPhrase;
    });
    if (another) text += "; other credentials followed";
    add(FindingKind::complete, std::move(text));
  }

  void judgeLengths() {
    for (const ChannelReport& channel : leg_.channels) {
      if (!channel.lengthChange) continue;
      const LengthChange& change = *channel.lengthChange;
      add(FindingKind::lengthsChanged,
          "the lengths moved by " + std::to_string(change.to - change.from) + " bytes after " +
              seconds(change.timeMicroseconds - start_) +
              ": the link's overhead or the length base changed in the middle of the run, and what was "
              "heard before is of no use");
      break;
    }
    for (const ChannelReport& channel : leg_.channels) {
      if (leg_.isProtected || channel.syncLength != leg_.headerBytes) continue;
      add(FindingKind::lengthBaseZero,
          "the length base is 0: a channel that starts with this base stays silent, and one that continues "
          "with it sends empty datagrams; use a pace whose length bases are greater than 0");
      break;
    }
  }

  void judgeBytes() {
    if (isComplete() || has(FindingKind::lengthsChanged)) return;
    unsigned contradictions = 0;
    for (const ChannelReport& channel : leg_.channels) contradictions += channel.contradictions;
    if (contradictions >= kContradictions) {
      add(FindingKind::crcNeverHolds,
          "the CRC never holds: " + std::to_string(contradictions) +
              " times a byte was heard with another value than before, as when two senders share one address "
              "or one sender starts again and again");
    } else if (leg_.crc == Crc::wrong) {
      add(FindingKind::crcNeverHolds,
          "the CRC does not hold, though every byte was heard: the sender's packet is damaged");
    }
  }

  void judgeSyncs() {
    if (isComplete() || !findings_.empty()) return;
    const bool anySync = std::ranges::any_of(
        leg_.channels, [](const ChannelReport& channel) { return channel.syncLength.has_value(); });
    if (anySync || leg_.frames < kEnoughFrames) return;
    add(FindingKind::syncNeverSeen,
        "no sync frame among " + std::to_string(leg_.frames) +
            " frames: without one the lengths mean nothing; the sender repeats syncs 0 times, or all of them "
            "are lost");
  }

  void judgeChannels() {
    const bool onlyVersion3 = version3(leg_).frames > 0 && !hasMulticasts(leg_) && !hasBroadcasts(leg_);
    if (onlyVersion3) {
      add(FindingKind::onlyVersion3,
          "only version 3 was sent: a module that reads only version 5 does not understand it, and it "
          "carries "
          "no append bytes");
      return;
    }
    if (hasBroadcasts(leg_) && !hasMulticasts(leg_) && broadcast(leg_).frames >= kEnoughFrames) {
      add(FindingKind::multicastMissing, "broadcasts are there, multicasts are not: " + whyNoMulticasts());
    } else if (hasMulticasts(leg_) && !hasBroadcasts(leg_) && multicast(leg_).frames >= kEnoughFrames) {
      add(FindingKind::broadcastMissing, "multicasts are there, broadcasts are not: " + whyNoBroadcasts());
    }
    const LegReport* const sent = findLeg(sender_, Leg::toAccessPoint);
    const LegReport* const copies = findLeg(sender_, Leg::fromAccessPoint);
    if (sent == nullptr || copies == nullptr || !hasBothOnlyFromPhone(*sent, *copies)) return;
    add(hasMulticasts(*copies) ? FindingKind::broadcastMissing : FindingKind::multicastMissing,
        hasMulticasts(*copies)
            ? "the phone sends broadcasts, but the access point does not repeat them: it "
              "filters them, and a module hears them only from the phone"
            : "the phone sends multicasts, but the access point does not repeat them: it " + filtersText() +
                  ", and a module hears them only from the phone");
  }

  /// True when the phone sends both kinds and the access point repeats only one of them.
  static bool hasBothOnlyFromPhone(const LegReport& sent, const LegReport& copies) {
    const bool sendsBoth = multicast(sent).frames >= kEnoughFrames && hasBroadcasts(sent);
    return sendsBoth && copies.frames >= kEnoughFrames && hasMulticasts(copies) != hasBroadcasts(copies);
  }

  std::string filtersText() const {
    if (sender_.unicasts < kEnoughFrames) return "filters multicasts, or converts them to unicasts";
    return "converts multicasts to unicasts, of which " + std::to_string(sender_.unicasts) + " were seen";
  }

  std::string whyNoMulticasts() const {
    if (leg_.leg == Leg::fromAccessPoint)
      return "the access point " + filtersText() + ", or the phone sends none";
    return "the phone sends none; its multicast length base is 0, or the system refuses them";
  }

  std::string whyNoBroadcasts() const {
    if (leg_.leg == Leg::fromAccessPoint)
      return "the access point filters broadcasts, or the phone sends none";
    return "the phone sends none; its broadcast length base is 0, or the system refuses them";
  }

  void judgeDensity() {
    if (isComplete() || has(FindingKind::crcNeverHolds) || has(FindingKind::lengthsChanged)) return;
    const double loss = worstLoss(leg_);
    const std::string heard = "heard for " + seconds(leg_.lastMicroseconds - leg_.firstMicroseconds);
    if (loss >= kSparseLoss) {
      add(FindingKind::tooSparse, "too few frames: " + percent(loss) + " are missing, " + heard);
    } else if (findings_.empty() || onlyChannelsAreMissing()) {
      unsigned cycles = 0;
      for (const ChannelReport& channel : leg_.channels) cycles = std::max(cycles, channel.cycles);
      if (cycles <= 2)
        add(FindingKind::tooShort, "the capture is too short: " + heard + ", less than two cycles");
    }
  }

  bool onlyChannelsAreMissing() const {
    return std::ranges::all_of(findings_, [](const Finding& finding) {
      return finding.kind == FindingKind::multicastMissing || finding.kind == FindingKind::broadcastMissing ||
             finding.kind == FindingKind::onlyVersion3;
    });
  }

  void judgeTimes() {
    if (std::ranges::any_of(leg_.channels, &ChannelReport::inBursts)) {
      add(FindingKind::heldInBursts,
          "frames come in bursts: an access point holds them back while stations sleep, so their order "
          "counts and their times do not");
      return;
    }
    const auto& groups = multicast(leg_).intervalMs;
    const auto& lengths = broadcast(leg_).intervalMs;
    const auto& only = groups || lengths ? std::nullopt : version3(leg_).intervalMs;
    if ((!groups && !lengths && !only) || fittingPace(leg_, paces_) || has(FindingKind::crcNeverHolds))
      return;
    std::string text = "the spacing is none of the known paces:";
    if (only)
      text += " version 3 every " + milliseconds(*only) + " instead of " + milliseconds(kVersion3IntervalMs);
    if (groups) text += " multicasts every " + milliseconds(*groups);
    if (lengths) text += std::string(groups ? "," : "") + " broadcasts every " + milliseconds(*lengths);
    add(FindingKind::paceUnknown, std::move(text));
  }

  const SenderReport& sender_;
  const LegReport& leg_;
  std::int64_t start_;  ///< Time of the leg's first frame.
  std::span<const KnownPace> paces_;
  std::vector<Finding> findings_;
};

bool isNear(const std::optional<double>& measured, int nominal, double tolerance) {
  return !measured || std::abs(*measured - nominal) <= tolerance;
}

}  // namespace

const char* nameOf(FindingKind kind) {
  switch (kind) {
    case FindingKind::complete:
      return "complete";
    case FindingKind::lengthsChanged:
      return "lengths_changed";
    case FindingKind::crcNeverHolds:
      return "crc_never_holds";
    case FindingKind::syncNeverSeen:
      return "sync_never_seen";
    case FindingKind::lengthBaseZero:
      return "length_base_zero";
    case FindingKind::multicastMissing:
      return "multicast_missing";
    case FindingKind::broadcastMissing:
      return "broadcast_missing";
    case FindingKind::onlyVersion3:
      return "only_version_3";
    case FindingKind::tooSparse:
      return "too_sparse";
    case FindingKind::tooShort:
      return "too_short";
    case FindingKind::undecided:
      return "undecided";
    case FindingKind::heldInBursts:
      return "held_in_bursts";
    case FindingKind::paceUnknown:
      return "pace_unknown";
    case FindingKind::nothing:
      return "nothing";
  }
  return "";
}

std::optional<std::string_view> fittingPace(const LegReport& leg, std::span<const KnownPace> paces) {
  const ChannelReport& groups = multicast(leg);
  const ChannelReport& lengths = broadcast(leg);
  if (!groups.intervalMs && !lengths.intervalMs) {
    const auto& only = version3(leg).intervalMs;
    const bool fits = only && isNear(only, kVersion3IntervalMs, kIntervalTolerance);
    return fits ? std::optional(kVersion3Pace) : std::nullopt;
  }
  for (const KnownPace& pace : paces) {
    if (isNear(groups.intervalMs, pace.multicastInterval, kIntervalTolerance) &&
        isNear(groups.pauseMs, pace.multicastPause, kPauseTolerance) &&
        isNear(lengths.intervalMs, pace.broadcastInterval, kIntervalTolerance) &&
        isNear(lengths.pauseMs, pace.broadcastPause, kPauseTolerance)) {
      return pace.name;
    }
  }
  return std::nullopt;
}

std::optional<Cipher> fittingCipher(const LegReport& leg, std::int32_t syncLength, int base) {
  // IV and ICV; IV, MIC and ICV; header and MIC of 8 or 16 bytes (IEEE 802.11-2020, 12.3 and 12.5).
  static constexpr Cipher kNone{"none", 0};
  static constexpr std::array<Cipher, 4> kCiphers = {
      {{"CCMP-128", 16}, {"TKIP", 20}, {"CCMP-256 or GCMP", 24}, {"WEP", 8}}};
  const int bytes = syncLength - leg.headerBytes - base;
  if (!leg.isProtected) return bytes == 0 ? std::optional(kNone) : std::nullopt;
  const auto found = std::ranges::find(kCiphers, bytes, &Cipher::bytes);
  return found == kCiphers.end() ? std::nullopt : std::optional(*found);
}

const LegReport& mainLeg(const SenderReport& sender) {
  const LegReport* best = &sender.legs.front();
  for (const LegReport& leg : sender.legs) {
    const bool isDone = leg.completion.has_value();
    const bool bestIsDone = best->completion.has_value();
    const bool isBetter = isDone && bestIsDone   ? leg.completion->frame < best->completion->frame
                          : isDone == bestIsDone ? leg.frames > best->frames
                                                 : isDone;
    if (isBetter) best = &leg;
  }
  return *best;
}

std::vector<Finding> judge(const SenderReport& sender, std::span<const KnownPace> paces) {
  return Judge(sender, paces).findings();
}

Finding judgeEmpty(const CaptureReport& capture) {
  const auto count = [&](FrameKind kind) { return capture.kinds[static_cast<std::size_t>(kind)]; };
  if (capture.frames == 0) return {FindingKind::nothing, "no frames at all"};
  std::string text = "no smart configuration among " + std::to_string(capture.frames) + " frames";
  const std::array<std::pair<std::uint64_t, const char*>, 10> parts = {{
      {capture.broadcasts, "broadcasts"},
      {capture.ourGroups, "stray multicasts to its groups"},
      {capture.otherGroups, "other multicasts"},
      {capture.unicasts, "unicasts"},
      {count(FrameKind::management), "management frames"},
      {count(FrameKind::control), "control frames"},
      {count(FrameKind::noContent) + count(FrameKind::fragment), "frames without data or in fragments"},
      {count(FrameKind::aggregate), "aggregates, whose destinations cannot be read"},
      {count(FrameKind::otherProtocol), "of other protocols"},
      {count(FrameKind::damaged) + count(FrameKind::unreadable), "damaged or unreadable"},
  }};
  const char* separator = ": ";
  for (const auto& [number, name] : parts) {
    if (number == 0) continue;
    text += separator + std::to_string(number) + " " + name;
    separator = ", ";
  }
  return {FindingKind::nothing, std::move(text)};
}

}  // namespace zor::receiver
