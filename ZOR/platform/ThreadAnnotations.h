#pragma once

// Clang's thread-safety analysis; other compilers see nothing.
#if defined(__clang__)
#define ZOR_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZOR_THREAD_ANNOTATION(x)
#endif

#define ZOR_CAPABILITY(name) ZOR_THREAD_ANNOTATION(capability(name))
#define ZOR_SCOPED_CAPABILITY ZOR_THREAD_ANNOTATION(scoped_lockable)
#define ZOR_GUARDED_BY(mutex) ZOR_THREAD_ANNOTATION(guarded_by(mutex))
#define ZOR_REQUIRES(...) ZOR_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZOR_ACQUIRE(...) ZOR_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZOR_RELEASE(...) ZOR_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ZOR_EXCLUDES(...) ZOR_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
