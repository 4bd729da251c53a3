#pragma once

#include <jni.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "bindings/c/zorsuite.h"

namespace zor::java {

/// A copy of a Java array, overwritten at the end because it may be a pass phrase. It ends at 1,024 bytes,
/// more than the library takes of any text.
class Bytes {
 public:
  Bytes(JNIEnv* environment, jbyteArray array) : isNull_(array == nullptr) {
    if (isNull_) return;
    const jsize length = std::min<jsize>(environment->GetArrayLength(array), sizeof bytes_);
    environment->GetByteArrayRegion(array, 0, length, bytes_);
    length_ = static_cast<std::size_t>(length);
  }
  ~Bytes() {
    volatile jbyte* const bytes = bytes_;
    for (std::size_t i = 0; i < sizeof bytes_; ++i) bytes[i] = 0;
  }
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;

  /// Null for a null array.
  const char* text() const { return isNull_ ? nullptr : reinterpret_cast<const char*>(bytes_); }
  const std::uint8_t* data() const {
    return isNull_ ? nullptr : reinterpret_cast<const std::uint8_t*>(bytes_);
  }
  std::size_t size() const { return length_; }

 private:
  bool isNull_;
  std::size_t length_ = 0;
  jbyte bytes_[1024];
};

/// A new Java array of the text's bytes; null, with an exception pending, without memory.
inline jbyteArray arrayOf(JNIEnv* environment, const zor_text& text) {
  const auto length = static_cast<jsize>(text.length);
  const jbyteArray array = environment->NewByteArray(length);
  if (array == nullptr) return nullptr;
  environment->SetByteArrayRegion(array, 0, length, reinterpret_cast<const jbyte*>(text.bytes));
  return array;
}

/// Fills a Java array with as many bytes.
template <std::size_t Size>
void store(JNIEnv* environment, jbyteArray array, const std::uint8_t (&bytes)[Size]) {
  environment->SetByteArrayRegion(array, 0, Size, reinterpret_cast<const jbyte*>(bytes));
}

}  // namespace zor::java
