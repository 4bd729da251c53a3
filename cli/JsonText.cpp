#include "cli/JsonText.h"

#include <cstdint>
#include <vector>

#include "cli/Hex.h"
#include "cli/Utf8.h"

namespace zor::cli {

Json jsonText(std::string_view bytes) {
  return Json::binary(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

namespace {

Json asTexts(const Json& event) {
  if (event.is_array()) {
    Json texts = Json::array();
    for (const Json& value : event) texts.push_back(asTexts(value));
    return texts;
  }
  if (!event.is_object()) return event;
  Json texts = Json::object();
  for (const auto& [key, value] : event.items()) {
    if (!value.is_binary()) {
      texts[key] = asTexts(value);
      continue;
    }
    const std::vector<std::uint8_t>& bytes = value.get_binary();
    const std::string text(bytes.begin(), bytes.end());
    texts[key] = text;
    if (!isUtf8(text)) texts[key + "_hex"] = toHex(bytes);
  }
  return texts;
}

}  // namespace

std::string jsonLine(const Json& event) {
  constexpr int kOneLine = -1;
  constexpr bool kAsciiOnly = true;
  return asTexts(event).dump(kOneLine, ' ', kAsciiOnly, Json::error_handler_t::replace);
}

}  // namespace zor::cli
