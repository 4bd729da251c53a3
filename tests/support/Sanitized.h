#pragma once

#if defined(__has_feature)
#define ZOR_HAS_FEATURE(feature) __has_feature(feature)
#else
#define ZOR_HAS_FEATURE(feature) 0
#endif

/// True in a build with the address or the thread sanitizer, which use memory and descriptors of their own.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || ZOR_HAS_FEATURE(address_sanitizer) || \
    ZOR_HAS_FEATURE(thread_sanitizer)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif
