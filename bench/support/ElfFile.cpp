#include "bench/support/ElfFile.h"

#include <cxxabi.h>
#include <elf.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

namespace zor::bench {
namespace {

class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path) {
    std::ifstream file(path, std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), {});
    const auto header = at<Elf64_Ehdr>(0);
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) fail();
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
      sections_.push_back(at<Elf64_Shdr>(header.e_shoff + i * header.e_shentsize));
    }
  }

  ElfFile read() const {
    ElfFile file;
    file.fileBytes = bytes_.size();
    for (const Elf64_Shdr& section : sections_) {
      if ((section.sh_flags & SHF_ALLOC) != 0) sizeOf(file, section) += section.sh_size;
      if (section.sh_type == SHT_DYNSYM) addExports(file, section);
    }
    std::sort(file.exports.begin(), file.exports.end());
    return file;
  }

 private:
  [[noreturn]] void fail() const {
    std::cerr << path_ << ": not a 64-bit ELF file\n";
    std::exit(1);
  }

  template <class T>
  T at(std::uint64_t offset) const {
    T value;
    if (offset + sizeof value > bytes_.size()) fail();
    std::memcpy(&value, bytes_.data() + offset, sizeof value);
    return value;
  }

  static std::uint64_t& sizeOf(ElfFile& file, const Elf64_Shdr& section) {
    if ((section.sh_flags & SHF_WRITE) == 0) return file.codeBytes;
    return section.sh_type == SHT_NOBITS ? file.bssBytes : file.dataBytes;
  }

  void addExports(ElfFile& file, const Elf64_Shdr& symbols) const {
    const Elf64_Shdr& names = sections_.at(symbols.sh_link);
    for (std::uint64_t offset = 0; offset < symbols.sh_size; offset += symbols.sh_entsize) {
      const auto symbol = at<Elf64_Sym>(symbols.sh_offset + offset);
      if (symbol.st_shndx == SHN_UNDEF || ELF64_ST_BIND(symbol.st_info) == STB_LOCAL) continue;
      file.exports.push_back(demangled(bytes_.data() + names.sh_offset + symbol.st_name));
    }
  }

  static std::string demangled(const char* symbol) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(symbol, nullptr, nullptr, &status),
                                                      std::free);
    return name ? name.get() : symbol;
  }

  std::string path_;
  std::string bytes_;
  std::vector<Elf64_Shdr> sections_;
};

}  // namespace

ElfFile readElfFile(const std::string& path) {
  return Reader(path).read();
}

}  // namespace zor::bench
