#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace zor::cli {

/// Keeps the order of its keys.
using Json = nlohmann::ordered_json;

/// A text from the network or the user as the value of an event's key: bytes, which `jsonLine` makes a text.
Json jsonText(std::string_view bytes);

/// `event`, an object, as one line of ASCII without its end. Under a key whose `jsonText` is UTF-8 stands
/// that text. Where it is not, each byte or part of a character that is none is U+FFFD, and the key with
/// `_hex` after its name follows, with all bytes in hexadecimal.
std::string jsonLine(const Json& event);

}  // namespace zor::cli
