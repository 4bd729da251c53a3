#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace zor::objc {

/// The bytes of `text` in UTF-8, none for nil, autoreleased. A lone half of a surrogate pair, which UTF-8 has
/// no bytes for, is replaced.
inline NSData* utf8(NSString* text) {
  return [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
}

/// `data`'s bytes, which live as long as it does; none for nil.
inline std::string_view view(NSData* data) {
  return {static_cast<const char*>([data bytes]), [data length]};
}

/// A copy of `bytes`, autoreleased.
inline NSData* data(const std::string& bytes) {
  return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

}  // namespace zor::objc
