#include <string_view>

#include "bindings/c/Support.h"

#define ZOR_TEXT_OF(number) #number
#define ZOR_DOTTED(major, minor, patch) ZOR_TEXT_OF(major) "." ZOR_TEXT_OF(minor) "." ZOR_TEXT_OF(patch)

static_assert(std::string_view(ZOR_VERSION) ==
                  ZOR_DOTTED(ZOR_C_VERSION_MAJOR, ZOR_C_VERSION_MINOR, ZOR_C_VERSION_PATCH),
              "zorsuite.h must have the version of ZOR/facade/Version.h");

std::int32_t zor_version() {
  return ZOR_C_VERSION;
}

const char* zor_version_text() {
  return ZOR_VERSION;
}
