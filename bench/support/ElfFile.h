#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zor::bench {

/// Sizes and exports of a 64-bit ELF shared library of this machine.
struct ElfFile {
  std::uint64_t fileBytes = 0;
  std::uint64_t codeBytes = 0;       ///< Loaded and never written: code, constants, tables.
  std::uint64_t dataBytes = 0;       ///< Loaded and writable, with an initial value.
  std::uint64_t bssBytes = 0;        ///< Writable, zero at load.
  std::vector<std::string> exports;  ///< Names of the exported symbols, demangled and sorted.
};

/// Reads a shared library. Ends the process when that fails.
ElfFile readElfFile(const std::string& path);

}  // namespace zor::bench
