#include "bench/support/Peers.h"

#include <algorithm>
#include <bitset>

namespace zor::bench {

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
      : listens_(listens), random_(seed), loss_(radio, random_), releases_(radio, random_) {}

  /// Returns the first datagram that the module may hear, of `count` that are sent in turn.
  std::int64_t first(std::int64_t count) { return listens_ == Listens::anyTime ? random_.below(count) : 0; }

  /// Returns whether the next datagram, sent `intervalUs` after the one before it, arrives.
  bool hears(std::int64_t intervalUs) {
    sentUs_ += intervalUs;
    heardUs_ = releases_.after(sentUs_);
    return !loss_.loses(heardUs_, 0);
  }

  bool over() const { return seconds() >= kGiveUpSeconds; }
  double seconds() const { return std::min(static_cast<double>(heardUs_) / 1e6, kGiveUpSeconds); }

 private:
  Listens listens_;
  Random random_;
  LossModel loss_;
  Releases releases_;
  std::int64_t sentUs_ = 0;
  std::int64_t heardUs_ = 0;
};

/// 250 guide datagrams, then 500 data datagrams, again and again, 8 ms apart. The data are 36 codes of 3
/// datagrams, each needed once, and continue where the guide interrupted them.
double runGuidedCodes(Listening& air) {
  constexpr std::int64_t kIntervalUs = 8000;
  constexpr std::int64_t kGuides = 250;
  constexpr std::int64_t kDataBetweenGuides = 500;
  constexpr std::size_t kDatagrams = 36 * 3;
  std::bitset<kDatagrams> heard;
  std::int64_t slot = air.first(kGuides + kDataBetweenGuides);
  auto index = static_cast<std::size_t>(air.first(kDatagrams));
  for (; !heard.all() && !air.over(); slot = (slot + 1) % (kGuides + kDataBetweenGuides)) {
    const bool arrives = air.hears(kIntervalUs);
    if (slot < kGuides) continue;
    if (arrives) heard[index] = true;
    index = (index + 1) % kDatagrams;
  }
  return air.seconds();
}

/// Five blocks of 8 rows, 15 ms apart. 4 datagrams lead the first block and 3 each of the others. A row needs
/// its datagram and any lead of its block in the same pass.
double runBlocksOfRows(Listening& air) {
  constexpr std::int64_t kIntervalUs = 15'000;
  constexpr std::size_t kBlocks = 5;
  constexpr std::size_t kRows = 8;
  constexpr std::size_t kFirstLeads = 4;
  constexpr std::size_t kLeads = 3;
  constexpr std::size_t kDatagrams = kFirstLeads + (kBlocks - 1) * kLeads + kBlocks * kRows;
  std::bitset<kBlocks * kRows> heard;
  auto skipped = static_cast<std::size_t>(air.first(kDatagrams));
  while (true) {
    for (std::size_t block = 0; block < kBlocks; ++block) {
      const std::size_t leads = block == 0 ? kFirstLeads : kLeads;
      bool named = false;
      for (std::size_t datagram = 0; datagram < leads + kRows; ++datagram) {
        if (skipped > 0) {
          --skipped;
          continue;
        }
        if (!air.hears(kIntervalUs)) continue;
        if (datagram < leads) named = true;
        if (datagram >= leads && named) heard[block * kRows + datagram - leads] = true;
        if (heard.all()) return air.seconds();
      }
      if (air.over()) return kGiveUpSeconds;
    }
  }
}

/// 200 lead and 80 magic datagrams, then 15 times 4 prefix and 34 data datagrams, 4 ms apart. The data come
/// in groups of 6, of which the last has only 4.
double runWholeGroups(Listening& air) {
  constexpr std::int64_t kIntervalUs = 4000;
  constexpr std::int64_t kLead = 200 + 80;
  constexpr std::int64_t kPasses = 15;
  constexpr std::int64_t kPrefix = 4;
  constexpr std::int64_t kData = 34;
  constexpr std::int64_t kGroup = 6;
  constexpr std::int64_t kCycle = kLead + kPasses * (kPrefix + kData);
  std::bitset<(kData + kGroup - 1) / kGroup> heard;
  bool whole = false;
  for (std::int64_t slot = air.first(kCycle); !heard.all() && !air.over(); slot = (slot + 1) % kCycle) {
    const bool arrives = air.hears(kIntervalUs);
    const std::int64_t datagram = slot < kLead ? -1 : (slot - kLead) % (kPrefix + kData) - kPrefix;
    if (datagram < 0) continue;
    if (datagram % kGroup == 0) whole = true;
    if (!arrives) whole = false;
    const bool ends = datagram % kGroup == kGroup - 1 || datagram == kData - 1;
    if (ends && whole) heard[static_cast<std::size_t>(datagram / kGroup)] = true;
  }
  return air.seconds();
}

}  // namespace

double runPeer(Peer peer, const RadioConditions& radio, Listens listens, std::uint64_t seed) {
  Listening air(radio, listens, seed);
  switch (peer) {
    case Peer::guidedCodes:
      return runGuidedCodes(air);
    case Peer::blocksOfRows:
      return runBlocksOfRows(air);
    case Peer::wholeGroups:
      return runWholeGroups(air);
  }
  return kGiveUpSeconds;
}

std::vector<double> runPeers(Peer peer, const RadioConditions& radio, Listens listens, int runs) {
  std::vector<double> seconds;
  for (int run = 1; run <= runs; ++run) {
    seconds.push_back(runPeer(peer, radio, listens, static_cast<std::uint64_t>(run)));
  }
  return seconds;
}

}  // namespace zor::bench
