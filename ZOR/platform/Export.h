#pragma once

/// Marks a declaration as part of the library's public face. The library is built with hidden
/// visibility, so a shared build exports what carries this mark and nothing else.
#define ZOR_API __attribute__((visibility("default")))
