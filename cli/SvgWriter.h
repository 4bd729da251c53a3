#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace zor::cli {

/// Writes a picture as SVG, which follows its viewer's choice of light or dark. Classes are those of its
/// style sheet, several separated by blanks; places are in pixels.
class SvgWriter {
 public:
  /// Writes `content`, any bytes, on a baseline.
  void text(double x, double baseline, std::string_view classes, std::string_view content);

  /// Draws path data.
  void path(std::string_view classes, std::string_view data);

  void line(std::string_view classes, double x1, double y1, double x2, double y2);

  /// The picture so far, as a file.
  std::string file(double width, double height) const;

 private:
  std::ostringstream body_;
};

/// Breaks `text` between words into lines of fewer than `columns` bytes, as far as words are shorter.
std::vector<std::string> linesOf(const std::string& text, std::size_t columns);

/// The distance of about `count` marks on an axis of length `range`: 1, 2 or 5 times a power of ten.
double markDistance(double range, int count);

}  // namespace zor::cli
