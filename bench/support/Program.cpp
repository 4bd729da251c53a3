#include "bench/support/Program.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "ZOR/ZorSuite.h"
#include "tests/support/OwnNamespace.h"

namespace zor::bench {

Program::Program(int argc, char** argv) : argc_(argc), argv_(argv) {
  app_.add_flag("--json", json_, "Print one JSON object per line");
  app_.add_option("--csv", csvFile_, "Also write comma-separated values to this file");
}

void Program::parse(const std::string& description) {
  app_.description(description);
  try {
    app_.parse(argc_, argv_);
  } catch (const CLI::ParseError& error) {
    std::exit(app_.exit(error));
  }
}

void Program::prepareToSend() {
  test::refuseOutsideNamespace();
  ZorSetLogSink([](const char*) {});
}

void Program::print(const Table& table) const {
  json_ ? table.printJson(std::cout) : table.print(std::cout);
  if (csvFile_.empty()) return;
  std::ofstream file(csvFile_);
  table.printCsv(file);
}

}  // namespace zor::bench

int main(int argc, char** argv) {
  zor::bench::Program program(argc, argv);
  zor::bench::runBenchmark(program);
  return 0;
}
