#pragma once

#include <cstdint>

namespace zor::bench {

/// How often any thread of the process has asked for heap memory so far, operator new included. Linking
/// AllocationCount.cpp puts the count in front of the C library's allocator.
std::int64_t allocationCount();

}  // namespace zor::bench
