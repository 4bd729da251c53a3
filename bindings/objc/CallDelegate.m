// Not Objective-C++: a function compiled as that, by GCC, crashes when it catches or passes on an
// NSException.
#import "bindings/objc/CallDelegate.h"

static void logException(NSException* exception) {
  NSLog(@"The delegate of a ZORSuite threw %@: %@", [exception name], [exception reason]);
}

NSString* ZORTextOfBytes(NSData* bytes) {
  NSString* text = [[NSString alloc] initWithData:bytes encoding:NSUTF8StringEncoding];
  if (text == nil) text = [[NSString alloc] initWithData:bytes encoding:NSISOLatin1StringEncoding];
  return [text autorelease];
}

void ZORCallSearchFound(id<ZORSuiteDelegate> target, ZORModuleTexts texts) {
  @try {
    if ([target respondsToSelector:@selector(onSearchFoundData:
                                                     MODULE_IP:MODULE_VER:MODULE_CAP:MODULE_EXT:)]) {
      [target onSearchFoundData:texts.moduleId
                      MODULE_IP:ZORTextOfBytes(texts.ip)
                     MODULE_VER:texts.version
                     MODULE_CAP:texts.capabilities
                     MODULE_EXT:texts.rest];
    } else {
      [target onSearchFound:ZORTextOfBytes(texts.moduleId)
                  MODULE_IP:ZORTextOfBytes(texts.ip)
                 MODULE_VER:ZORTextOfBytes(texts.version)
                 MODULE_CAP:ZORTextOfBytes(texts.capabilities)
                 MODULE_EXT:ZORTextOfBytes(texts.rest)];
    }
  } @catch (NSException* exception) {
    logException(exception);
  }
}

void ZORCallSmartFound(id<ZORSuiteDelegate> target, ZORModuleTexts texts) {
  @try {
    if ([target respondsToSelector:@selector(onSmartFoundData:MODULE_IP:MODULE_VER:MODULE_CAP:MODULE_EXT:)]) {
      [target onSmartFoundData:texts.moduleId
                     MODULE_IP:ZORTextOfBytes(texts.ip)
                    MODULE_VER:texts.version
                    MODULE_CAP:texts.capabilities
                    MODULE_EXT:texts.rest];
    } else {
      [target onSmartFound:ZORTextOfBytes(texts.moduleId)
                 MODULE_IP:ZORTextOfBytes(texts.ip)
                MODULE_VER:ZORTextOfBytes(texts.version)
                MODULE_CAP:ZORTextOfBytes(texts.capabilities)
                MODULE_EXT:ZORTextOfBytes(texts.rest)];
    }
  } @catch (NSException* exception) {
    logException(exception);
  }
}
