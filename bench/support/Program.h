#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "bench/support/Table.h"

namespace zor::bench {

/// The command line and the output of a benchmark.
class Program {
 public:
  Program(int argc, char** argv);

  /// Returns the command line's parser, to which a benchmark adds its own options.
  CLI::App& options() { return app_; }

  /// Reads the command line. Ends the process after --help, which prints `description`, and after an error.
  void parse(const std::string& description);

  /// Ends the process unless it runs under scripts/in-namespace, because what it sends must not reach a
  /// network. From here on the library's log lines are dropped.
  static void prepareToSend();

  /// Prints a table, or JSON lines with --json. Also writes the file of --csv.
  void print(const Table& table) const;

 private:
  CLI::App app_;
  int argc_;
  char** argv_;
  bool json_ = false;
  std::string csvFile_;
};

/// Runs a benchmark: adds its options, parses, measures, prints. Each benchmark defines it; `main` calls it.
void runBenchmark(Program& program);

}  // namespace zor::bench
