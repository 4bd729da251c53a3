// Provisions one module from Objective-C; the main run loop is all that the callbacks need.

#import <ZORObjC/ZORObjC.h>

@interface Finder : NSObject <ZORSuiteDelegate> {
 @public
  BOOL found;
}
@end

@implementation Finder

- (void)onSearchFound:(NSString*)moduleId
            MODULE_IP:(NSString*)MODULE_IP
           MODULE_VER:(NSString*)MODULE_VER
           MODULE_CAP:(NSString*)MODULE_CAP
           MODULE_EXT:(NSString*)MODULE_EXT {
}

- (void)onSmartFound:(NSString*)moduleId
           MODULE_IP:(NSString*)MODULE_IP
          MODULE_VER:(NSString*)MODULE_VER
          MODULE_CAP:(NSString*)MODULE_CAP
          MODULE_EXT:(NSString*)MODULE_EXT {
  printf("found %s at %s\n", [moduleId UTF8String], [MODULE_IP UTF8String]);
  found = YES;
}

@end

int main(int argumentCount, char** arguments) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  if (argumentCount < 3) {
    fprintf(stderr, "usage: %s SSID PASSPHRASE [SECONDS]\n", arguments[0]);
    return 2;
  }
  int32_t seconds = argumentCount > 3 ? atoi(arguments[3]) : 60;
  Finder* finder = [[Finder alloc] init];
  ZORSuite* suite = [[ZORSuite alloc] init];
  [suite setDelegate:finder];
  [suite SmartConfigOnlineListen:25010];
  [suite SmartConfigV5_Start:[NSString stringWithUTF8String:arguments[1]]
                    PASSWORD:[NSString stringWithUTF8String:arguments[2]]
                     TIMEOUT:seconds * 1000];
  NSDate* end = [NSDate dateWithTimeIntervalSinceNow:seconds];
  while (!finder->found && [end timeIntervalSinceNow] > 0) {
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:end];
  }
  [suite SmartConfigStop];
  int result = finder->found ? 0 : 1;
  [suite release];
  [finder release];
  [pool release];
  return result;
}
