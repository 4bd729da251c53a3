#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "bench/support/Table.h"

namespace zor::bench {

/// The command line and the output of one benchmark.
class Program {
 public:
  explicit Program(const std::string& description);

  /// Where a benchmark adds options of its own.
  CLI::App& options() { return app_; }

  /// Reads the command line; ends the process after --help and after wrong use.
  void parse(int argc, char** argv);

  /// Ends the process unless it runs under scripts/in-namespace: what it sends must not reach a network.
  static void requireNamespace();

  /// Prints a table, or JSON lines with --json, and appends to the file of --csv.
  void print(const Table& table) const;

 private:
  CLI::App app_;
  bool json_ = false;
  std::string csvFile_;
};

}  // namespace zor::bench
