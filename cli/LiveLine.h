#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zor::cli {

/// The line at the bottom of a terminal that is redrawn in place. Makes the bytes to write; `width` is the
/// terminal's present number of columns.
class LiveLine {
 public:
  /// Replaces the line by `text`, which is escaped already, cut to the width.
  std::string draw(std::string_view text, std::size_t width);

  /// Clears the line; empty when none is drawn. A line that a narrower terminal has wrapped since is cleared
  /// whole.
  std::string clear(std::size_t width);

 private:
  /// Moves the cursor to where what is drawn begins.
  std::string toStart(std::size_t width) const;

  std::size_t columns_ = 0;  ///< Of what is drawn.
};

/// `text`, escaped already, and, in what `width` leaves after it, a bar of which `share`, 0 to 1, is filled,
/// such as "26 % [##--------]". Without room for a bar, `text`.
std::string withBar(std::string_view text, double share, std::size_t width);

}  // namespace zor::cli
