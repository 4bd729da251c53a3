#include <cstdint>

#include "bindings/c/zorsuite.h"
#include "bindings/java/jni/Bytes.h"
#include "bindings/java/jni/Natives.h"

namespace zor::java {
namespace {

jint workerIsRunning(JNIEnv*, jclass, jint worker) {
  return zor_worker_is_running(worker);
}

jint workerCancel(JNIEnv*, jclass, jint worker) {
  return zor_worker_cancel(worker);
}

jint workerWait(JNIEnv*, jclass, jint worker) {
  return zor_worker_wait(worker);
}

jint getTunable(JNIEnv*, jclass, jint tunable) {
  std::int32_t value = 0;
  zor_get_tunable(tunable, &value);
  return value;
}

jint setTunable(JNIEnv*, jclass, jint tunable, jint value) {
  return zor_set_tunable(tunable, value);
}

jint findPace(JNIEnv* environment, jclass, jbyteArray name, jbyteArray values) {
  const Bytes bytes(environment, name);
  std::uint8_t found[14];
  const std::int32_t code = zor_find_pace(bytes.text(), bytes.size(), found);
  if (code == ZOR_OK) store(environment, values, found);
  return code;
}

jint makePortRecord(JNIEnv* environment, jclass, jint port, jbyteArray record) {
  std::uint8_t made[3];
  const std::int32_t code = zor_make_port_record(port, made);
  if (code == ZOR_OK) store(environment, record, made);
  return code;
}

}  // namespace

void addPacing(std::vector<JNINativeMethod>& methods) {
  methods.push_back(method("workerIsRunning", "(I)I", workerIsRunning));
  methods.push_back(method("workerCancel", "(I)I", workerCancel));
  methods.push_back(method("workerWait", "(I)I", workerWait));
  methods.push_back(method("getTunable", "(I)I", getTunable));
  methods.push_back(method("setTunable", "(II)I", setTunable));
  methods.push_back(method("findPace", "([B[B)I", findPace));
  methods.push_back(method("makePortRecord", "(I[B)I", makePortRecord));
}

}  // namespace zor::java
