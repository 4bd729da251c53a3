#include <exception>
#include <functional>
#include <memory>
#include <utility>

#include "bindings/c/Support.h"

using zor::c::guarded;
using zor::c::Held;
using zor::c::hold;

/// What a `zor_closure` pointer leads to.
struct zor_closure {
  std::function<void()> run;
};

namespace {

/// Work of the application's, which runs at most once. It is destroyed on the thread that runs it, whoever
/// else still holds a copy of the closure: the thread that posts it may.
class Work {
 public:
  Work(void (*function)(void* user), Held user) : function_(function), user_(std::move(user)) {}

  void run() {
    const Held user = std::move(user_);
    function_(user.get());
  }

 private:
  void (*function_)(void* user);
  Held user_;
};

/// Tells the library that the application's loop refused a closure.
class Refused : public std::exception {};

/// Hands `closure` to the application's loop, which then owns it.
void handOver(zor_main_queue_post post, void* user, std::function<void()> closure) {
  auto owned = std::make_unique<zor_closure>(zor_closure{std::move(closure)});
  if (post(user, owned.get()) == 0) throw Refused();
  static_cast<void>(owned.release());  // It may have been run and freed by now.
}

}  // namespace

std::int32_t zor_run_main_queue(std::int32_t wait_ms) {
  return ZorRunMainQueue(wait_ms);
}

std::int32_t zor_main_queue_descriptor() {
  const std::int32_t descriptor = ZorMainQueueDescriptor();
  return descriptor < 0 ? ZOR_ERROR_SYSTEM : descriptor;
}

std::int32_t zor_post_to_main_queue(void (*function)(void* user), void* user, void (*destroy)(void* user)) {
  return guarded([=]() -> std::int32_t {
    Held held = hold(user, destroy);
    if (function == nullptr) return ZOR_ERROR_NULL;
    const auto work = std::make_shared<Work>(function, std::move(held));
    const bool posted = ZorPostToMainQueue([work] { work->run(); });
    return posted ? ZOR_OK : ZOR_ERROR_SYSTEM;
  });
}

std::int32_t zor_closure_run(zor_closure* closure) {
  if (closure == nullptr) return ZOR_ERROR_NULL;
  const std::unique_ptr<zor_closure> owned(closure);
  owned->run();
  return ZOR_OK;
}

std::int32_t zor_closure_free(zor_closure* closure) {
  if (closure == nullptr) return ZOR_ERROR_NULL;
  const std::unique_ptr<zor_closure> owned(closure);
  return ZOR_OK;
}

std::int32_t zor_set_main_queue(zor_main_queue_post post, void* user, void (*destroy)(void* user)) {
  return guarded([=]() -> std::int32_t {
    const Held held = hold(user, destroy);
    if (post == nullptr) {
      ZorSetMainQueue(nullptr);
      return ZOR_OK;
    }
    ZorSetMainQueue(
        [post, held](std::function<void()> closure) { handOver(post, held.get(), std::move(closure)); });
    return zor::c::isShared(held) ? ZOR_OK : ZOR_ERROR_MEMORY;
  });
}
