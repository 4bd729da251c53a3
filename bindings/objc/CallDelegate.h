#pragma once

#import "bindings/objc/ZORObjC/ZORObjC.h"

#ifdef __cplusplus
extern "C" {
#endif

/// What a callback says, as bytes of a module's line.
typedef struct {
  NSData* moduleId;
  NSData* ip;
  NSData* version;
  NSData* capabilities;
  NSData* rest;
} ZORModuleTexts;

/// `bytes` as UTF-8 or, when they are none, with one character for each byte; autoreleased.
NSString* ZORTextOfBytes(NSData* bytes);

/// Calls `onSearchFound` of `target`, with bytes if it wants them. What it throws is logged and ends here.
void ZORCallSearchFound(id<ZORSuiteDelegate> target, ZORModuleTexts texts);

/// Calls `onSmartFound` of `target`, with bytes if it wants them. What it throws is logged and ends here.
void ZORCallSmartFound(id<ZORSuiteDelegate> target, ZORModuleTexts texts);

#ifdef __cplusplus
}
#endif
