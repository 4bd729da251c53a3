#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zor::bench {

/// One line of a table: an object that maps column names to texts and numbers, in the columns' order.
using Row = nlohmann::ordered_json;

/// What a benchmark has to say.
class Table {
 public:
  /// `name` begins every line for machines; `title` stands above the table for people.
  Table(std::string name, std::string title) : name_(std::move(name)), title_(std::move(title)) {}

  /// Every row has the columns of the first.
  void add(Row row) { rows_.push_back(std::move(row)); }

  const std::vector<Row>& rows() const { return rows_; }

  /// The title and the rows in aligned columns.
  void print(std::ostream& out) const;

  /// A JSON object for each row on a line of its own, with the table's name as "benchmark".
  void printJson(std::ostream& out) const;

  /// Comma-separated values under a line of column names, for a plotting program.
  void printCsv(std::ostream& out) const;

 private:
  std::string name_;
  std::string title_;
  std::vector<Row> rows_;
};

}  // namespace zor::bench
