#pragma once

#include <cstdint>
#include <vector>

#include "simulator/Trial.h"

namespace zor::bench {

/// Models of three common ways to provision over lengths or addresses, after their published schedules. They
/// favour the peers: a module needs the data and nothing else (no length base, channel or check), and frames
/// take no time on the air.
enum class Peer {
  guidedCodes,   ///< P1: guide lengths for 2 s, then codes of three datagrams for 4 s.
  blocksOfRows,  ///< P2: five blocks of eight rows; frames that name the block lead each of them.
  wholeGroups,   ///< P3: a long lead, then data in groups that must arrive whole.
};

/// Returns the seconds until one run has delivered the credentials, at most `simulator::kGiveUpSeconds`.
double runPeer(Peer peer, const simulator::RadioConditions& radio, simulator::Listens listens,
               std::uint64_t seed);

/// Returns the same for `runs` runs with the seeds from 1 up.
std::vector<double> runPeers(Peer peer, const simulator::RadioConditions& radio, simulator::Listens listens,
                             int runs);

}  // namespace zor::bench
