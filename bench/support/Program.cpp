#include "bench/support/Program.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

namespace zor::bench {

Program::Program(const std::string& description) : app_(description) {
  app_.add_flag("--json", json_, "Print one JSON object per line");
  app_.add_option("--csv", csvFile_, "Write comma-separated values to this file as well");
}

void Program::parse(int argc, char** argv) {
  try {
    app_.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::exit(app_.exit(error));
  }
}

void Program::requireNamespace() {
  const char* const mark = std::getenv("ZOR_NAMESPACE");
  if (mark != nullptr && std::string(mark) == "1") return;
  std::cerr << "Run this with scripts/in-namespace: it sends multicasts and broadcasts.\n";
  std::exit(2);
}

void Program::print(const Table& table) const {
  json_ ? table.printJson(std::cout) : table.print(std::cout);
  if (csvFile_.empty()) return;
  std::ofstream file(csvFile_);
  table.printCsv(file);
}

}  // namespace zor::bench
