#pragma once

#include "ZOR/platform/Export.h"

/// Milliseconds, by the wall clock, since the first call in the process, which returns 0.
///
/// The name has outlived its unit. It is not monotonic: it steps when the wall clock does. Any
/// thread; never blocks.
ZOR_API long ZorGetUsec();
