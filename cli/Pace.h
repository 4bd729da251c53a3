#pragma once

#include <string>

#include "ZOR/ZorSuite.h"

namespace zor::cli {

/// The fourteen pacing values of a version 5 run in the order of `ZorSuite::SmartConfigV5_SetProperty`: for
/// the multicast channel, then for the broadcast channel, the length base, the intervals after a datagram, a
/// cycle and a block in milliseconds, and the repeats of sync datagrams, data and cycles.
using Pace = decltype(ZorPace::values);

/// Reads the argument of `--pace`: the name of one of `kZorPaces`; fourteen values 0..255 separated by commas
/// or blanks; or the name of a file that holds them, also separated by line ends, with comments from '#' to
/// the end of the line. Throws `WrongUse` for anything else, and for values that switch both channels off.
Pace readPace(const std::string& argument);

}  // namespace zor::cli
