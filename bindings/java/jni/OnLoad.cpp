#include <jni.h>

#include <exception>
#include <vector>

#include "bindings/java/jni/Environment.h"
#include "bindings/java/jni/MainQueue.h"
#include "bindings/java/jni/Natives.h"

namespace {

bool registerMethods(JNIEnv* environment) {
  std::vector<JNINativeMethod> methods;
  zor::java::addSuite(methods);
  zor::java::addReports(methods);
  zor::java::addSeams(methods);
  zor::java::addPacing(methods);
  const jclass type = environment->FindClass("zorsuite/Native");
  if (type == nullptr) return false;
  return environment->RegisterNatives(type, methods.data(), static_cast<jint>(methods.size())) == JNI_OK;
}

}  // namespace

/// Called by `System.loadLibrary`.
extern "C" JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* machine, void*) {
  void* environment = nullptr;
  if (machine->GetEnv(&environment, JNI_VERSION_1_6) != JNI_OK) return JNI_ERR;
  try {
    auto* const own = static_cast<JNIEnv*>(environment);
    const bool ready =
        zor::java::setUp(machine, own) && registerMethods(own) && zor::java::takeOverMainQueue();
    return ready ? JNI_VERSION_1_6 : JNI_ERR;
  } catch (const std::exception&) {
    return JNI_ERR;
  }
}
