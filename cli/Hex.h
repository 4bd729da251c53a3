#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zor::cli {

/// Two lower-case hexadecimal digits per byte.
std::string toHex(const std::vector<std::uint8_t>& bytes);

/// The bytes in `text`, two hexadecimal digits each. Throws `WrongUse` for anything else.
std::vector<std::uint8_t> fromHex(std::string_view text);

}  // namespace zor::cli
