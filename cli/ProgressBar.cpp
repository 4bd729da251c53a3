#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>

namespace zor::cli {

std::string progressBar(int percent) {
  constexpr int kBarWidth = 30;
  const int bounded = std::clamp(percent, 0, 100);
  const auto filled = static_cast<std::size_t>(bounded * kBarWidth / 100);
  char number[16];
  std::snprintf(number, sizeof number, "] %3d %%", bounded);
  std::string bar("[");
  bar.append(filled, '#').append(kBarWidth - filled, '-').append(number);
  return bar;
}

}  // namespace zor::cli
