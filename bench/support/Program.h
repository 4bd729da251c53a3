#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "bench/support/Table.h"

namespace zor::bench {

/// The command line and the output of one benchmark.
class Program {
 public:
  Program(int argc, char** argv);

  /// Where a benchmark adds options of its own.
  CLI::App& options() { return app_; }

  /// Reads the command line; ends the process after --help, which begins with `description`, and after wrong
  /// use.
  void parse(const std::string& description);

  /// Ends the process unless it runs under scripts/in-namespace: what it sends must not reach a network.
  /// Drops the library's log lines from then on.
  static void prepareToSend();

  /// Prints a table, or JSON lines with --json, and writes the file of --csv.
  void print(const Table& table) const;

 private:
  CLI::App app_;
  int argc_;
  char** argv_;
  bool json_ = false;
  std::string csvFile_;
};

/// What a benchmark is, called by the one `main` of them all: adds its options, parses, measures, prints.
void runBenchmark(Program& program);

}  // namespace zor::bench
