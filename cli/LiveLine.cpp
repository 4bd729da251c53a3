#include "cli/LiveLine.h"

#include <algorithm>

#include "cli/Escape.h"

namespace zor::cli {

std::string LiveLine::draw(std::string_view text, std::size_t width) {
  // The last column stays free: a full line would leave the cursor between two rows.
  const std::string_view shown = cutToColumns(text, width - 1);
  std::string bytes = toStart(width);
  columns_ = columns(shown);
  return bytes.append(shown).append("\x1b[J");  // "Erase in page", ECMA-48.
}

std::string LiveLine::clear(std::size_t width) {
  if (columns_ == 0) return {};
  std::string bytes = toStart(width) + "\x1b[J";
  columns_ = 0;
  return bytes;
}

std::string LiveLine::toStart(std::size_t width) const {
  const std::size_t rowsAbove = columns_ == 0 ? 0 : (columns_ - 1) / width;
  if (rowsAbove == 0) return "\r";
  return "\r\x1b[" + std::to_string(rowsAbove) + "A";  // "Cursor up".
}

std::string withBar(std::string_view text, double share, std::size_t width) {
  constexpr std::size_t kFrame = 4;  // A space, two brackets, and the last column, which stays free.
  constexpr std::size_t kMinBarWidth = 5;
  constexpr std::size_t kMaxWidth = 40;
  std::string line(text);
  const std::size_t taken = columns(text);
  if (taken + kFrame + kMinBarWidth > width) return line;
  const std::size_t bar = std::min(kMaxWidth, width - kFrame - taken);
  const auto filled = static_cast<std::size_t>(std::clamp(share, 0.0, 1.0) * static_cast<double>(bar));
  return line.append(" [").append(filled, '#').append(bar - filled, '-').append("]");
}

}  // namespace zor::cli
