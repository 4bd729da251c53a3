#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zor::bench {

/// What a 64-bit ELF shared library of this machine says about itself.
struct ElfFile {
  std::uint64_t fileBytes = 0;
  std::uint64_t codeBytes = 0;       ///< Loaded and never written: code, constants, tables.
  std::uint64_t dataBytes = 0;       ///< Loaded and writable, with an initial value.
  std::uint64_t bssBytes = 0;        ///< Writable, zero at load.
  std::vector<std::string> exports;  ///< Names of the symbols that it offers, readable and sorted.
};

/// Ends the process when the file cannot be read.
ElfFile readElfFile(const std::string& path);

}  // namespace zor::bench
