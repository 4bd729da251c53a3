#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/Trial.h"

namespace zor::bench {

/// How much of what a peer sends its module needs. The published variants need less than the plain form: a
/// module that sees the network by itself needs no SSID, and some keep what arrived of an incomplete group.
enum class Variant { plain, best };

/// Models of three common ways to provision over lengths or addresses, after their published schedules. They
/// favour the peers: a module needs the data and nothing else (no length base, channel or check), frames take
/// no time on the air, and an access point that holds only multicasts holds none of theirs.
enum class Peer {
  guidedCodes,   ///< P1: guide lengths for 2 s, then codes of three datagrams for 4 s. Best: 21 of 36 codes.
  blocksOfRows,  ///< P2: five blocks of eight rows; frames that name the block lead each. Best: three blocks.
  wholeGroups,   ///< P3: a long lead, then data in groups that must arrive whole. Best: 4 of 6, in parts.
};

/// One run that has delivered the credentials or was given up.
struct PeerOutcome {
  double seconds;  ///< At most `simulator::kGiveUpSeconds`.
  double frames;   ///< Sent until then.
};

PeerOutcome runPeer(Peer peer, Variant variant, const simulator::RadioConditions& radio,
                    simulator::Listens listens, std::uint64_t seed);

}  // namespace zor::bench
