#include "bindings/java/jni/MainQueue.h"

#include <cstdint>

#include "bindings/c/zorsuite.h"
#include "bindings/java/jni/Environment.h"

namespace zor::java {
namespace {

std::int32_t post(void*, zor_closure* closure) {
  const CallbackFrame frame;
  JNIEnv* const environment = frame.environment();
  if (environment == nullptr) return 0;
  const jboolean taken = environment->CallStaticBooleanMethod(callbacks().type, callbacks().post,
                                                              reinterpret_cast<jlong>(closure));
  return !environment->ExceptionCheck() && taken == JNI_TRUE ? 1 : 0;
}

}  // namespace

bool takeOverMainQueue() {
  return zor_set_main_queue(post, nullptr, nullptr) == ZOR_OK;
}

}  // namespace zor::java
