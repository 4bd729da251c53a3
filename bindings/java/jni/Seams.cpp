#include <cstdint>

#include "bindings/c/zorsuite.h"
#include "bindings/java/jni/Bytes.h"
#include "bindings/java/jni/Environment.h"
#include "bindings/java/jni/Natives.h"

namespace zor::java {
namespace {

std::int32_t onSocket(void* hook, std::int32_t descriptor) {
  const CallbackFrame frame;
  JNIEnv* const environment = frame.environment();
  if (environment == nullptr) return 0;
  const jboolean accepted = environment->CallStaticBooleanMethod(callbacks().type, callbacks().onSocket,
                                                                 static_cast<jobject>(hook), descriptor);
  return !environment->ExceptionCheck() && accepted == JNI_TRUE ? 1 : 0;
}

void onLine(void* sink, zor_text line) {
  const CallbackFrame frame;
  JNIEnv* const environment = frame.environment();
  const jbyteArray bytes = environment == nullptr ? nullptr : arrayOf(environment, line);
  if (bytes == nullptr) return;
  environment->CallStaticVoidMethod(callbacks().type, callbacks().onLine, static_cast<jobject>(sink), bytes);
}

/// Hands `object` to the library by one of its setters; null restores the default.
template <class Function>
jint hand(JNIEnv* environment, std::int32_t (*set)(Function, void*, void (*)(void*)), Function function,
          jobject object) {
  if (object == nullptr) return set(nullptr, nullptr, nullptr);
  void* const reference = environment->NewGlobalRef(object);
  if (reference == nullptr) return ZOR_ERROR_MEMORY;
  return set(function, reference, releaseReference);
}

jint setSocketHook(JNIEnv* environment, jclass, jobject hook) {
  return hand(environment, zor_set_socket_hook, &onSocket, hook);
}

jint setLogSink(JNIEnv* environment, jclass, jobject sink) {
  return hand(environment, zor_set_log_sink, &onLine, sink);
}

jint setInterface(JNIEnv* environment, jclass, jbyteArray name) {
  const Bytes bytes(environment, name);
  return zor_set_interface(bytes.text(), bytes.size());
}

jint logLine(JNIEnv* environment, jclass, jbyteArray line) {
  const Bytes bytes(environment, line);
  return zor_log_line(bytes.text(), bytes.size());
}

void closureRun(JNIEnv*, jclass, jlong closure) {
  zor_closure_run(reinterpret_cast<zor_closure*>(closure));
}

void closureFree(JNIEnv*, jclass, jlong closure) {
  zor_closure_free(reinterpret_cast<zor_closure*>(closure));
}

}  // namespace

void addSeams(std::vector<JNINativeMethod>& methods) {
  methods.push_back(method("setSocketHook", "(Lzorsuite/ZorSocketHook;)I", setSocketHook));
  methods.push_back(method("setLogSink", "(Lzorsuite/ZorLogSink;)I", setLogSink));
  methods.push_back(method("setInterface", "([B)I", setInterface));
  methods.push_back(method("logLine", "([B)I", logLine));
  methods.push_back(method("closureRun", "(J)V", closureRun));
  methods.push_back(method("closureFree", "(J)V", closureFree));
}

}  // namespace zor::java
