#include "bench/support/Peers.h"

#include <algorithm>
#include <bitset>

namespace zor::bench {

using simulator::Held;
using simulator::kGiveUpSeconds;
using simulator::Listens;
using simulator::LossModel;
using simulator::RadioConditions;
using simulator::Random;
using simulator::Releases;

namespace {

/// One run of a peer: its clock, the air, and the time at which it is given up.
class Listening {
 public:
  Listening(const RadioConditions& radio, Listens listens, std::uint64_t seed)
      : listens_(listens),
        radio_(broadcastsOf(radio)),
        random_(seed),
        loss_(radio_, random_),
        releases_(radio_, random_) {}

  /// Returns the first datagram that the module may hear, of `count` that are sent in turn.
  std::int64_t first(std::int64_t count) { return listens_ == Listens::anyTime ? random_.below(count) : 0; }

  /// Returns whether the next datagram, sent `intervalUs` after the one before it, arrives.
  bool hears(std::int64_t intervalUs) {
    ++frames_;
    sentUs_ += intervalUs;
    heardUs_ = releases_.after(sentUs_);
    return !loss_.loses(heardUs_, 0);
  }

  bool over() const { return seconds() >= kGiveUpSeconds; }
  double seconds() const { return std::min(static_cast<double>(heardUs_) / 1e6, kGiveUpSeconds); }
  PeerOutcome outcome() const { return {seconds(), frames_}; }

 private:
  static RadioConditions broadcastsOf(RadioConditions radio) {
    if (radio.held == Held::multicast) radio.holdUs = 0;
    return radio;
  }

  Listens listens_;
  RadioConditions radio_;
  Random random_;
  LossModel loss_;
  Releases releases_;
  std::int64_t sentUs_ = 0;
  std::int64_t heardUs_ = 0;
  double frames_ = 0;
};

/// 250 guide datagrams, then 500 data datagrams, again and again, 8 ms apart. The data are 36 codes of 3
/// datagrams, sent in turn from where the guide interrupted them; the first `needed` codes are needed.
PeerOutcome runGuidedCodes(Listening& air, std::size_t needed) {
  constexpr std::int64_t kIntervalUs = 8000;
  constexpr std::int64_t kGuides = 250;
  constexpr std::int64_t kDataBetweenGuides = 500;
  constexpr std::size_t kDatagrams = 36 * 3;
  std::bitset<kDatagrams> heard;
  for (std::size_t i = 3 * needed; i < kDatagrams; ++i) heard[i] = true;
  std::int64_t slot = air.first(kGuides + kDataBetweenGuides);
  auto index = static_cast<std::size_t>(air.first(kDatagrams));
  for (; !heard.all() && !air.over(); slot = (slot + 1) % (kGuides + kDataBetweenGuides)) {
    const bool arrives = air.hears(kIntervalUs);
    if (slot < kGuides) continue;
    if (arrives) heard[index] = true;
    index = (index + 1) % kDatagrams;
  }
  return air.outcome();
}

/// Blocks of 8 rows, 15 ms apart. 4 datagrams lead the first block and 3 each of the others. A row needs its
/// datagram and any lead of its block in the same pass.
PeerOutcome runBlocksOfRows(Listening& air, std::size_t blocks) {
  constexpr std::int64_t kIntervalUs = 15'000;
  constexpr std::size_t kRows = 8;
  constexpr std::size_t kFirstLeads = 4;
  constexpr std::size_t kLeads = 3;
  std::vector<bool> heard(blocks * kRows);
  auto skipped = air.first(static_cast<std::int64_t>(kFirstLeads + (blocks - 1) * kLeads + heard.size()));
  while (!air.over()) {
    for (std::size_t block = 0; block < blocks; ++block) {
      const std::size_t leads = block == 0 ? kFirstLeads : kLeads;
      bool named = false;
      for (std::size_t datagram = 0; datagram < leads + kRows; ++datagram) {
        if (skipped-- > 0 || !air.hears(kIntervalUs)) continue;
        if (datagram < leads) named = true;
        if (datagram >= leads && named) heard[block * kRows + datagram - leads] = true;
        if (std::count(heard.begin(), heard.end(), false) == 0) return air.outcome();
      }
    }
  }
  return air.outcome();
}

/// What a P3 module needs of the data.
struct Groups {
  std::int64_t needed;
  bool
      whole;  ///< Each group in one pass. Else what arrives after the group's first datagram, which names it.
};

/// 200 lead and 80 magic datagrams, then 15 times 4 prefix and 34 data datagrams, 4 ms apart. The data come
/// in groups of 6, of which the last has only 4.
PeerOutcome runWholeGroups(Listening& air, const Groups& groups) {
  constexpr std::int64_t kIntervalUs = 4000;
  constexpr std::int64_t kLead = 200 + 80;
  constexpr std::int64_t kPasses = 15;
  constexpr std::int64_t kPrefix = 4;
  constexpr std::int64_t kData = 34;
  constexpr std::int64_t kGroup = 6;
  constexpr std::int64_t kCycle = kLead + kPasses * (kPrefix + kData);
  std::bitset<static_cast<std::size_t>(kData)> heard;
  for (std::int64_t i = groups.needed * kGroup; i < kData; ++i) heard[static_cast<std::size_t>(i)] = true;
  bool named = false;
  std::vector<std::size_t> heardOfGroup;
  for (std::int64_t slot = air.first(kCycle); !heard.all() && !air.over(); slot = (slot + 1) % kCycle) {
    const bool arrives = air.hears(kIntervalUs);
    const std::int64_t datagram = slot < kLead ? -1 : (slot - kLead) % (kPrefix + kData) - kPrefix;
    if (datagram < 0) continue;
    if (datagram % kGroup == 0) {
      named = arrives;
      heardOfGroup.clear();
    }
    if (arrives) heardOfGroup.push_back(static_cast<std::size_t>(datagram));
    const std::int64_t length = datagram >= kData - kData % kGroup ? kData % kGroup : kGroup;
    if (!named || (groups.whole && static_cast<std::int64_t>(heardOfGroup.size()) < length)) continue;
    for (const std::size_t one : heardOfGroup) heard[one] = true;
  }
  return air.outcome();
}

}  // namespace

PeerOutcome runPeer(Peer peer, Variant variant, const RadioConditions& radio, Listens listens,
                    std::uint64_t seed) {
  Listening air(radio, listens, seed);
  const bool plain = variant == Variant::plain;
  switch (peer) {
    case Peer::guidedCodes:
      return runGuidedCodes(air, plain ? 36 : 21);
    case Peer::blocksOfRows:
      return runBlocksOfRows(air, plain ? 5 : 3);
    case Peer::wholeGroups:
      return runWholeGroups(air, plain ? Groups{6, true} : Groups{4, false});
  }
  return air.outcome();
}

}  // namespace zor::bench
