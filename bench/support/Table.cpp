#include "bench/support/Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace zor::bench {
namespace {

/// Writes three significant digits, and all digits before the point.
std::string numberText(double value) {
  const double size = std::fabs(value);
  const int decimals = value == std::floor(value) || size >= 100 ? 0 : size >= 10 ? 1 : size >= 1 ? 2 : 3;
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string cellText(const Row& cell) {
  if (cell.is_string()) return cell.get<std::string>();
  if (cell.is_number()) return numberText(cell.get<double>());
  return "-";
}

/// Aligns texts to the left and numbers to the right.
std::string padded(const Row& cell, std::size_t width) {
  const std::string text = cellText(cell);
  const std::string blanks(width - text.size(), ' ');
  return cell.is_string() ? text + blanks : blanks + text;
}

}  // namespace

void Table::print(std::ostream& out) const {
  if (rows_.empty()) return;
  Row heading = Row::object();
  for (const auto& [column, cell] : rows_.front().items()) heading[column] = column;
  std::vector<Row> lines = rows_;
  lines.insert(lines.begin(), heading);

  out << title_ << "\n";
  for (const Row& line : lines) {
    for (const auto& [column, first] : rows_.front().items()) {
      std::size_t width = column.size();
      for (const Row& row : rows_) width = std::max(width, cellText(row[column]).size());
      const std::string text = padded(line[column], width);
      // A heading is aligned as its column is.
      const bool shifted = line[column].is_string() && !first.is_string();
      out << "  " << (shifted ? std::string(width - column.size(), ' ') + column : text);
    }
    out << "\n";
  }
  out << std::endl;
}

void Table::printJson(std::ostream& out) const {
  for (const Row& row : rows_) {
    Row line = {{"benchmark", name_}};
    line.update(row);
    out << line.dump(-1, ' ', true) << "\n";
  }
  out.flush();
}

void Table::printCsv(std::ostream& out) const {
  if (rows_.empty()) return;
  const char* separator = "";
  for (const auto& [column, cell] : rows_.front().items()) {
    out << separator << column;
    separator = ",";
  }
  for (const Row& row : rows_) {
    separator = "\n";
    for (const auto& [column, cell] : rows_.front().items()) {
      out << separator << (row[column].is_null() ? "NaN" : cellText(row[column]));
      separator = ",";
    }
  }
  out << "\n";
}

}  // namespace zor::bench
