#pragma once

#include <cstdint>
#include <cstdio>

namespace zor {

/// The dotted-quad text of group 239.`second`.`pair[0]`.`pair[1]` (administratively scoped, RFC 2365).
class GroupText {
 public:
  GroupText(std::uint8_t second, const std::uint8_t* pair) {
    std::snprintf(text_, sizeof text_, "239.%d.%d.%d", second, pair[0], pair[1]);
  }

  const char* text() const { return text_; }

 private:
  char text_[16];
};

}  // namespace zor
