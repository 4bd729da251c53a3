#pragma once

#include <cstdint>

namespace zor::bench {

/// Returns how often the process's threads have allocated heap memory so far, with operator new too. Linking
/// AllocationCount.cpp replaces the C library's allocator by one that counts.
std::int64_t allocationCount();

}  // namespace zor::bench
