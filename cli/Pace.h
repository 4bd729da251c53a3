#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace zor::cli {

/// The fourteen pacing values of a version 5 run in the order of `ZorSuite::SmartConfigV5_SetProperty`: for
/// the multicast channel, then for the broadcast channel, the length base, the intervals after a datagram, a
/// cycle and a block in milliseconds, and the repeats of sync datagrams, data and cycles.
using Pace = std::array<std::uint8_t, 14>;

/// Reads what `--pace` was given: "default", "fast" or "robust"; fourteen values 0..255 with commas or blanks
/// between; or the name of a file that holds them, line ends between too and comments from '#' to the end of
/// the line. Throws `WrongUse` for anything else, and for values that switch both channels off.
Pace readPace(const std::string& argument);

}  // namespace zor::cli
