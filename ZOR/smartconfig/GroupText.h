#pragma once

#include <cstdint>
#include <cstdio>

namespace zor {

/// The dotted-quad text of group 239.`second`.`pair[0]`.`pair[1]` (RFC 2365: 239/8 is for sites).
class GroupText {
 public:
  GroupText(int second, const std::uint8_t* pair) {
    std::snprintf(text_, sizeof text_, "239.%d.%d.%d", second & 0xFF, pair[0], pair[1]);
  }

  const char* text() const { return text_; }

 private:
  char text_[16];
};

}  // namespace zor
