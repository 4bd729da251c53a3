#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>

/// Ends the run when a promise does not hold, so that the fuzzer keeps the input.
inline void require(bool holds) {
  if (!holds) __builtin_trap();
}

/// What libFuzzer calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
