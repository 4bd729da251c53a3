#pragma once

#include <functional>

namespace zor {

/// Posts `report`, a callback that a datagram from the network caused, to the main-thread queue: in one order
/// with what `ZorPostToMainQueue` posts, but into 1,024 places of its own, so that strangers cannot take the
/// application's. Returns false, with the report dropped, in the same cases. Any thread; never blocks.
bool postReport(std::function<void()> report);

/// False while `postReport` would find no place, so that there is no use in making a report. Any thread.
bool hasPlaceForReport();

}  // namespace zor
