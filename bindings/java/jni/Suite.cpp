#include <cstddef>
#include <cstdint>

#include "bindings/c/zorsuite.h"
#include "bindings/java/jni/Bytes.h"
#include "bindings/java/jni/Environment.h"
#include "bindings/java/jni/Natives.h"

namespace zor::java {
namespace {

zor_suite* suiteOf(jlong address) {
  return reinterpret_cast<zor_suite*>(address);
}

void deliver(void* listener, jboolean smart, const zor_module& module) {
  const CallbackFrame frame;
  JNIEnv* const environment = frame.environment();
  if (environment == nullptr) return;
  jbyteArray arrays[5];
  const zor_text* const texts[] = {&module.id, &module.ip, &module.version, &module.capabilities,
                                   &module.extension};
  for (int i = 0; i < 5; ++i) {
    arrays[i] = arrayOf(environment, *texts[i]);
    if (arrays[i] == nullptr) return;
  }
  environment->CallStaticVoidMethod(callbacks().type, callbacks().onModule, static_cast<jobject>(listener),
                                    smart, arrays[0], arrays[1], arrays[2], arrays[3], arrays[4]);
}

void onSmartFound(void* listener, const zor_module* module) {
  deliver(listener, JNI_TRUE, *module);
}

void onSearchFound(void* listener, const zor_module* module) {
  deliver(listener, JNI_FALSE, *module);
}

jstring versionText(JNIEnv* environment, jclass) {
  return environment->NewStringUTF(zor_version_text());
}

jlong suiteCreate(JNIEnv*, jclass) {
  zor_suite* suite = nullptr;
  zor_suite_create(&suite);
  return reinterpret_cast<jlong>(suite);
}

void suiteFree(JNIEnv*, jclass, jlong suite) {
  zor_suite_free(suiteOf(suite));
}

jint suiteSetListener(JNIEnv* environment, jclass, jlong suite, jobject listener) {
  if (listener == nullptr) return zor_suite_set_callbacks(suiteOf(suite), nullptr);
  zor_callbacks callbacks{};
  callbacks.size = sizeof callbacks;
  callbacks.user = environment->NewGlobalRef(listener);
  if (callbacks.user == nullptr) return ZOR_ERROR_MEMORY;
  callbacks.destroy = releaseReference;
  callbacks.on_smart_found = onSmartFound;
  callbacks.on_search_found = onSearchFound;
  return zor_suite_set_callbacks(suiteOf(suite), &callbacks);
}

using Start = std::int32_t (*)(zor_suite*, const char*, std::size_t, const char*, std::size_t, std::int32_t);

/// The native method of a start that takes credentials.
template <Start Call>
jint startWith(JNIEnv* environment, jclass, jlong suite, jbyteArray ssid, jbyteArray passPhrase,
               jint timeoutMs) {
  const Bytes name(environment, ssid);
  const Bytes secret(environment, passPhrase);
  return Call(suiteOf(suite), name.text(), name.size(), secret.text(), secret.size(), timeoutMs);
}

jint smartConfigV5Append(JNIEnv* environment, jclass, jlong suite, jbyteArray array) {
  const Bytes bytes(environment, array);
  return zor_smart_config_v5_append(suiteOf(suite), bytes.data(), bytes.size());
}

jint smartConfigV5SetProperty(JNIEnv* environment, jclass, jlong suite, jbyteArray array) {
  const Bytes bytes(environment, array);
  return zor_smart_config_v5_set_property(suiteOf(suite), bytes.data(), bytes.size());
}

jint smartConfigV5MixV3Enable(JNIEnv*, jclass, jlong suite, jboolean mix) {
  return zor_smart_config_v5_mix_v3_enable(suiteOf(suite), mix == JNI_TRUE ? 1 : 0);
}

jint smartConfigOnlineListen(JNIEnv*, jclass, jlong suite, jint port) {
  return zor_smart_config_online_listen(suiteOf(suite), port);
}

jint smartConfigStop(JNIEnv*, jclass, jlong suite) {
  return zor_smart_config_stop(suiteOf(suite));
}

jint smartConfigProgress(JNIEnv*, jclass, jlong suite) {
  std::int32_t progress = 0;
  zor_smart_config_progress(suiteOf(suite), &progress);
  return progress;
}

jint smartConfigStatus(JNIEnv*, jclass) {
  std::int32_t status = 0;
  zor_smart_config_status(&status);
  return status;
}

jint deviceSearch(JNIEnv*, jclass, jlong suite) {
  return zor_device_search(suiteOf(suite));
}

jint deviceSearchSetProperty(JNIEnv*, jclass, jlong suite, jint intervalMs, jint count) {
  return zor_device_search_set_property(suiteOf(suite), intervalMs, count);
}

jint deviceUpgrade(JNIEnv* environment, jclass, jlong suite, jbyteArray ip, jbyteArray url) {
  const Bytes address(environment, ip);
  const Bytes firmware(environment, url);
  return zor_device_upgrade(suiteOf(suite), address.text(), address.size(), firmware.text(), firmware.size());
}

jint deviceUpgradeProgress(JNIEnv*, jclass, jlong suite) {
  std::int32_t progress = 0;
  zor_device_upgrade_progress(suiteOf(suite), &progress);
  return progress;
}

}  // namespace

void addSuite(std::vector<JNINativeMethod>& methods) {
  methods.push_back(method("versionText", "()Ljava/lang/String;", versionText));
  methods.push_back(method("suiteCreate", "()J", suiteCreate));
  methods.push_back(method("suiteFree", "(J)V", suiteFree));
  methods.push_back(method("suiteSetListener", "(JLzorsuite/ZorSuiteListener;)I", suiteSetListener));
  methods.push_back(method("smartConfigV5Start", "(J[B[BI)I", startWith<zor_smart_config_v5_start>));
  methods.push_back(method("smartConfigV3Start", "(J[B[BI)I", startWith<zor_smart_config_v3_start>));
  methods.push_back(method("smartConfigV5Append", "(J[B)I", smartConfigV5Append));
  methods.push_back(method("smartConfigV5SetProperty", "(J[B)I", smartConfigV5SetProperty));
  methods.push_back(method("smartConfigV5MixV3Enable", "(JZ)I", smartConfigV5MixV3Enable));
  methods.push_back(method("smartConfigOnlineListen", "(JI)I", smartConfigOnlineListen));
  methods.push_back(method("smartConfigStop", "(J)I", smartConfigStop));
  methods.push_back(method("smartConfigProgress", "(J)I", smartConfigProgress));
  methods.push_back(method("smartConfigStatus", "()I", smartConfigStatus));
  methods.push_back(method("deviceSearch", "(J)I", deviceSearch));
  methods.push_back(method("deviceSearchSetProperty", "(JII)I", deviceSearchSetProperty));
  methods.push_back(method("deviceUpgrade", "(J[B[B)I", deviceUpgrade));
  methods.push_back(method("deviceUpgradeProgress", "(J)I", deviceUpgradeProgress));
}

}  // namespace zor::java
