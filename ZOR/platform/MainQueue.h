#pragma once

#include <cstdint>
#include <functional>

#include "ZOR/platform/Export.h"

/// \file
/// The main-thread queue: every delegate callback is a closure on it.
///
/// 1. Closures run in the order in which they were posted, each at most once.
/// 2. With the built-in queue they run only inside `ZorRunMainQueue`, on its caller's thread.
/// 3. At most 1,024 callbacks and, counted apart, 1,024 closures that the application posted are undelivered
///    at a time, including those in the hands of an application's own loop that have neither begun to run nor
///    been dropped. However many modules report themselves, the application can post.
/// 4. No lock of the library is held while a closure runs, so it may call any operation.
/// 5. What a closure throws is dropped; the closures after it still run. A closure that ends its thread
///    (`pthread_exit`) counts as delivered, and the closures after it run in the next `ZorRunMainQueue`.

/// Hands one closure to the application's main loop. It is called on the thread that posts: a worker's, or
/// the application's in `ZorPostToMainQueue` and in the wrapper's start. It must not run the closure there,
/// and must not block for long. What it throws drops the closure.
using ZorMainQueuePost = std::function<void(std::function<void()> closure)>;

/// Makes `post` take every closure posted from now on; an empty `post` restores the built-in queue.
/// Closures that the built-in queue already holds stay there for `ZorRunMainQueue`. A worker that is
/// posting at that moment may still call the old `post`, which stays alive until then. Any thread.
ZOR_API void ZorSetMainQueue(ZorMainQueuePost post);

/// Runs what the built-in queue holds, on the calling thread.
///
/// Waits at most `waitMs` milliseconds (0 or less: not at all) for the first closure; closures that
/// are posted while it runs are left to the next call. Returns how many closures it ran.
/// Call it from one thread, the application's main thread. Without memory for a queue it runs none.
ZOR_API std::int32_t ZorRunMainQueue(std::int32_t waitMs);

/// A descriptor that polls readable while the built-in queue holds work, for the application's own
/// event loop. The library owns it, and opens it at the first call: do not read, write or close it.
/// Returns -1 when the system gives no descriptor; a later call tries again. Any thread.
ZOR_API std::int32_t ZorMainQueueDescriptor();

/// Posts `closure` to the main-thread queue. Returns false, with the closure dropped, when 1,024 posted by
/// this function are undelivered, when memory is short, or when the application's loop refused it. Any
/// thread; never blocks.
ZOR_API bool ZorPostToMainQueue(std::function<void()> closure);
