// Feeds each file of a folder to a fuzzer's body, so that ctest runs the seeds without libFuzzer.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include "fuzz/Fuzz.h"

namespace {

/// The bytes get a buffer of exactly their size, so that a sanitizer sees what reads past them.
void runSeed(const std::filesystem::path& file) {
  const auto size = static_cast<std::size_t>(std::filesystem::file_size(file));
  const auto bytes = std::make_unique<std::uint8_t[]>(size);
  std::ifstream seed(file, std::ios::binary);
  seed.read(reinterpret_cast<char*>(bytes.get()), static_cast<std::streamsize>(size));
  require(seed.good());
  LLVMFuzzerTestOneInput(bytes.get(), size);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  int count = 0;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1], error)) {
    // Named first: a promise that does not hold ends the process.
    std::fprintf(stderr, "%s\n", entry.path().c_str());
    runSeed(entry.path());
    ++count;
  }
  if (count == 0) std::fprintf(stderr, "%s holds no seeds\n", argv[1]);
  return count == 0 ? 1 : 0;
}
