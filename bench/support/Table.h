#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zor::bench {

/// One row of a table: an object that maps column names to texts and numbers, in the order of the columns.
using Row = nlohmann::ordered_json;

/// Results of a benchmark.
class Table {
 public:
  /// `name` identifies the table in JSON lines; `title` is printed above it.
  Table(std::string name, std::string title) : name_(std::move(name)), title_(std::move(title)) {}

  /// Adds a row, which must have the columns of the first one.
  void add(Row row) { rows_.push_back(std::move(row)); }

  const std::vector<Row>& rows() const { return rows_; }

  /// Prints the title and the rows in aligned columns.
  void print(std::ostream& out) const;

  /// Prints each row as a JSON object on a line of its own, with the table's name as "benchmark".
  void printJson(std::ostream& out) const;

  /// Prints a line of column names and the rows as comma-separated values, for a plotting program.
  void printCsv(std::ostream& out) const;

 private:
  std::string name_;
  std::string title_;
  std::vector<Row> rows_;
};

}  // namespace zor::bench
