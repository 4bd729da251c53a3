#pragma once

#include <jni.h>

namespace zor::java {

/// What the native side calls of the class `Callbacks`, found when the library is loaded.
struct Callbacks {
  jclass type;
  jmethodID post;
  jmethodID onModule;
  jmethodID onSocket;
  jmethodID onLine;
};

/// Finds the callbacks and notes the virtual machine. False with an exception pending, or without memory.
bool setUp(JavaVM* machine, JNIEnv* environment);

/// The same for all threads; valid after `setUp`.
const Callbacks& callbacks();

/// The calling thread's environment. A worker's thread is attached, as a daemon, at its first call, and
/// detached when it ends. Null when the virtual machine takes no more threads.
JNIEnv* environmentOfThread();

/// The local references of one callback: a worker's thread would keep them until it ends. Clears what the
/// callback left pending, because a native thread has nobody to throw it at.
class CallbackFrame {
 public:
  CallbackFrame();
  ~CallbackFrame();
  CallbackFrame(const CallbackFrame&) = delete;
  CallbackFrame& operator=(const CallbackFrame&) = delete;

  /// Null when nothing can be called.
  JNIEnv* environment() const { return environment_; }

 private:
  JNIEnv* environment_;
};

/// Deletes the global reference `user`, the `destroy` of everything that Java hands to the library.
void releaseReference(void* user);

}  // namespace zor::java
