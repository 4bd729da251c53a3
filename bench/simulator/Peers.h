#pragma once

#include <cstdint>
#include <vector>

#include "bench/simulator/Trial.h"

namespace zor::bench {

/// Three common ways to provision over lengths or addresses, as their schedules are published. What the
/// module needs besides the data (a length base, a channel, a check) it is given for nothing, and frames take
/// no time on the air.
enum class Peer {
  guidedCodes,   ///< P1: guide lengths for 2 s, then codes of three datagrams for 4 s.
  blocksOfRows,  ///< P2: five blocks of eight rows, each led by frames that name the block.
  wholeGroups,   ///< P3: a long lead, then data in groups that must arrive whole.
};

/// Seconds until one run has told the credentials, at most `kGiveUpSeconds`.
double runPeer(Peer peer, const RadioConditions& radio, Listens listens, std::uint64_t seed);

std::vector<double> runPeers(Peer peer, const RadioConditions& radio, Listens listens, int runs);

}  // namespace zor::bench
