// A user with automatic reference counting, which has the compiler judge what the headers say about
// ownership, nil and Swift. It is compiled, not run: GCC's runtime has no such counting.
@import ZORObjC;

@interface Screen : NSObject <ZORSuiteDelegate>
@property(nonatomic, strong) ZORSuite* suite;
@property(nonatomic, copy, nullable) NSString* found;
@end

@implementation Screen

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
  self.found = moduleId;
}

- (int64_t)provision:(NSString*)ssid {
  self.suite = [[ZORSuite alloc] init];
  self.suite.delegate = self;
  [self.suite SmartConfigOnlineListen:0];
  [self.suite SmartConfigV5_Append:nil];
  [self.suite SmartConfigV5_Start:ssid PASSWORD:@"" TIMEOUT:1000];
  if (self.suite.SmartConfigReport.listener.state == ZORWorkerStateNoSocket) return -1;
  ZORBroadcast_SSID_Password* wrapper = [[ZORBroadcast_SSID_Password alloc] init];
  [wrapper startBroadcast_SSID:ssid Password:@""];
  wrapper.myZorSuite.delegate = self;
  return self.suite.SmartConfigReport.multicast.datagrams;
}

@end
