#include "bindings/java/jni/Environment.h"

#include <pthread.h>

namespace zor::java {
namespace {

constexpr jint kReferencesOfACallback = 8;

JavaVM* machine;
Callbacks javaCallbacks;
pthread_key_t attachedKey;  ///< Not null on the threads that this file has attached.

void detach(void*) {
  machine->DetachCurrentThread();
}

JNIEnv* attach() {
  JNIEnv* environment = nullptr;
#if defined(__ANDROID__)
  JNIEnv** const result = &environment;
#else
  void** const result = reinterpret_cast<void**>(&environment);
#endif
  if (machine->AttachCurrentThreadAsDaemon(result, nullptr) != JNI_OK) return nullptr;
  if (pthread_setspecific(attachedKey, machine) == 0) return environment;
  detach(nullptr);  // Nobody would do it later.
  return nullptr;
}

jmethodID methodOf(JNIEnv* environment, const char* name, const char* signature) {
  return environment->ExceptionCheck() ? nullptr
                                       : environment->GetStaticMethodID(javaCallbacks.type, name, signature);
}

}  // namespace

bool setUp(JavaVM* javaMachine, JNIEnv* environment) {
  machine = javaMachine;
  const jclass type = environment->FindClass("zorsuite/Callbacks");
  if (type == nullptr) return false;
  javaCallbacks.type = static_cast<jclass>(environment->NewGlobalRef(type));
  if (javaCallbacks.type == nullptr) return false;
  javaCallbacks.post = methodOf(environment, "post", "(J)Z");
  javaCallbacks.onModule = methodOf(environment, "onModule", "(Lzorsuite/ZorSuiteListener;Z[B[B[B[B[B)V");
  javaCallbacks.onSocket = methodOf(environment, "onSocket", "(Lzorsuite/ZorSocketHook;I)Z");
  javaCallbacks.onLine = methodOf(environment, "onLine", "(Lzorsuite/ZorLogSink;[B)V");
  return javaCallbacks.onLine != nullptr && pthread_key_create(&attachedKey, detach) == 0;
}

const Callbacks& callbacks() {
  return javaCallbacks;
}

JNIEnv* environmentOfThread() {
  void* environment = nullptr;
  const jint result = machine->GetEnv(&environment, JNI_VERSION_1_6);
  if (result == JNI_OK) return static_cast<JNIEnv*>(environment);
  return result == JNI_EDETACHED ? attach() : nullptr;
}

CallbackFrame::CallbackFrame() : environment_(environmentOfThread()) {
  if (environment_ == nullptr || environment_->PushLocalFrame(kReferencesOfACallback) == 0) return;
  environment_->ExceptionClear();
  environment_ = nullptr;
}

CallbackFrame::~CallbackFrame() {
  if (environment_ == nullptr) return;
  if (environment_->ExceptionCheck()) environment_->ExceptionClear();
  environment_->PopLocalFrame(nullptr);
}

void releaseReference(void* user) {
  JNIEnv* const environment = environmentOfThread();
  if (environment != nullptr) environment->DeleteGlobalRef(static_cast<jobject>(user));
}

}  // namespace zor::java
