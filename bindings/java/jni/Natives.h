#pragma once

#include <jni.h>

#include <vector>

namespace zor::java {

// The native methods of `Native`, by what they are about.

void addSuite(std::vector<JNINativeMethod>& methods);
void addReports(std::vector<JNINativeMethod>& methods);
void addSeams(std::vector<JNINativeMethod>& methods);
void addPacing(std::vector<JNINativeMethod>& methods);

/// An entry of that list. JNI's own struct takes names that it does not change as changeable.
template <class Function>
JNINativeMethod method(const char* name, const char* signature, Function* function) {
  return {const_cast<char*>(name), const_cast<char*>(signature), reinterpret_cast<void*>(function)};
}

}  // namespace zor::java
