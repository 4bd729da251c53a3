#pragma once

#import <Foundation/Foundation.h>
#include <stdint.h>

#import "ZORObjCLanguage.h"
#import "ZORObjCReports.h"

/// \file
/// The Objective-C face of the library: `ZORSuite`, its delegate, the wrapper that provisions with one call.
///
/// 1. Callbacks come on the main thread, from its run loop in the common modes. There is nothing to call: the
///    first use of `ZORSuite` makes the main run loop the library's main-thread queue (`ZorSetMainQueue`),
///    for C++ callers too.
/// 2. Operations that take texts take them as `NSString`, sent as UTF-8, or as `NSData`, sent as it is: a
///    network's name need not be UTF-8. Both are cut at their field's length in bytes and at the first NUL.
/// 3. A callback's text that is no UTF-8 is read as ISO 8859-1, so each of its bytes is one character. A
///    delegate that must have the bytes implements the callback whose name ends in `Data`.
/// 4. A delegate is not kept alive, and gets no callback after its suite was released. The workers run on.
///
/// It needs Foundation only. Users may use automatic reference counting or not.

NS_ASSUME_NONNULL_BEGIN

/// Hears of modules. Every call is made on the main thread, one at a time, with texts from a module's line,
/// which are claims of a stranger. An NSException that it throws is logged and dropped.
///
/// - `moduleId`: the value of the line's `mac` pair, at most 19 bytes.
/// - `MODULE_IP`: the dotted-quad address that the line came from.
/// - `MODULE_VER`, at most 19 bytes: the version of the firmware.
/// - `MODULE_CAP`, at most 39 bytes: the module's text about its capabilities.
/// - `MODULE_EXT`, at most 399 bytes: the rest of the line, such as "x=9,y=8".
@protocol ZORSuiteDelegate <NSObject>

/// A module answered a search.
- (void)onSearchFound:(NSString*)moduleId
            MODULE_IP:(NSString*)MODULE_IP
           MODULE_VER:(NSString*)MODULE_VER
           MODULE_CAP:(NSString*)MODULE_CAP
           MODULE_EXT:(NSString*)MODULE_EXT
    ZOR_SWIFT_NAME("onSearchFound(moduleID:ip:version:capabilities:rest:)");

/// A module announced that it has joined the network; not a proof that the present run was heard.
- (void)onSmartFound:(NSString*)moduleId
           MODULE_IP:(NSString*)MODULE_IP
          MODULE_VER:(NSString*)MODULE_VER
          MODULE_CAP:(NSString*)MODULE_CAP
          MODULE_EXT:(NSString*)MODULE_EXT
    ZOR_SWIFT_NAME("onSmartFound(moduleID:ip:version:capabilities:rest:)");

@optional

/// Is called in place of `onSearchFound`, with the bytes as the module sent them.
- (void)onSearchFoundData:(NSData*)moduleId
                MODULE_IP:(NSString*)MODULE_IP
               MODULE_VER:(NSData*)MODULE_VER
               MODULE_CAP:(NSData*)MODULE_CAP
               MODULE_EXT:(NSData*)MODULE_EXT
    ZOR_SWIFT_NAME("onSearchFoundData(moduleID:ip:version:capabilities:rest:)");

/// Is called in place of `onSmartFound`, with the bytes as the module sent them.
- (void)onSmartFoundData:(NSData*)moduleId
               MODULE_IP:(NSString*)MODULE_IP
              MODULE_VER:(NSData*)MODULE_VER
              MODULE_CAP:(NSData*)MODULE_CAP
              MODULE_EXT:(NSData*)MODULE_EXT
    ZOR_SWIFT_NAME("onSmartFoundData(moduleID:ip:version:capabilities:rest:)");

@end

/// Starts, steers and stops the library's workers. All state but the delegate is process-wide: two suites
/// drive the same workers.
///
/// Call the starts from one thread; the stop, the properties, the progresses and the reports from any. A
/// start waits for the worker that it replaces: a few milliseconds, or the whole rest of an upgrade. Nothing
/// else blocks. A text that is nil counts as empty.
@interface ZORSuite : NSObject {
 @private
  struct ZORSuiteState* _state;  ///< The suite of the library.
}

/// Not kept alive. Built with clang, it becomes nil when the delegate goes. GCC's runtime knows no weak
/// references: there, set it to nil before the delegate goes. Any thread.
@property(atomic, ZOR_WEAK_PROPERTY, nullable) id<ZORSuiteDelegate> delegate;

/// The library's version, "3.5.1".
- (NSString*)GetLibraryVersion ZOR_SWIFT_NAME("libraryVersion()");

/// Starts a search for the modules on the network, in place of a running one; each is reported once.
- (void)DeviceSearch ZOR_SWIFT_NAME("deviceSearch()");

/// Sets the milliseconds between a search's requests (100 at load) and their number (20), for a running
/// search too.
- (void)DeviceSearchSetProperty:(int32_t)interval
                          COUNT:(int32_t)COUNT ZOR_SWIFT_NAME("deviceSearchSetProperty(intervalMs:count:)");

/// Tells the module at dotted-quad `IP` to fetch the firmware at `URL` ("http://host[:port]/path", at most
/// 512 bytes). Waits, without limit, for a running upgrade to end by itself.
- (void)DeviceUpgrade:(NSString*)IP URL:(NSString*)URL ZOR_SWIFT_NAME("deviceUpgrade(ip:url:)");

/// 0 requested, 1 command sent, 2 to 99 per cent, 100 or more done; negative for a failure: -100 silence for
/// 10 s, -111 or -112 URL refused, -121 or -122 no socket, else what the module answered.
- (int32_t)DeviceUpgradeProgress ZOR_SWIFT_NAME("deviceUpgradeProgress()");

/// Listens for announcements on a UDP port; one outside 1 to 65534 takes the first that is free from 25010
/// up. Returns the port bound, or -1 with no listener.
- (int32_t)SmartConfigOnlineListen:(int32_t)port ZOR_SWIFT_NAME("smartConfigOnlineListen(port:)");

/// Asks the smart configuration senders and the listener to end, without waiting.
- (void)SmartConfigStop ZOR_SWIFT_NAME("smartConfigStop()");

/// The share of the time-out that has passed, 0 to 100, or the negative code of a sender that got no socket.
/// It says nothing about the module, and may be any number after a step of the wall clock.
- (int32_t)SmartConfigProgress ZOR_SWIFT_NAME("smartConfigProgress()");

/// Starts a version 5 run of `TIMEOUT` milliseconds. `SSID` is cut at 32 bytes, `PASSWORD` at 64. Opens no
/// listener: call `SmartConfigOnlineListen:` before it.
- (void)SmartConfigV5_Start:(NSString*)SSID
                   PASSWORD:(NSString*)PASSWORD
                    TIMEOUT:(int32_t)TIMEOUT ZOR_SWIFT_NAME("smartConfigV5Start(ssid:password:timeoutMs:)");

/// The same with the bytes of SSID and pass phrase.
- (void)SmartConfigV5_StartData:(NSData*)SSID
                       PASSWORD:(NSData*)PASSWORD
                        TIMEOUT:(int32_t)TIMEOUT
    ZOR_SWIFT_NAME("smartConfigV5Start(ssidData:password:timeoutMs:)");

/// Sets the application data of later version 5 runs, of which 16 bytes are kept; nil for none.
- (void)SmartConfigV5_Append:(NSData* ZOR_NULLABLE)bytes ZOR_SWIFT_NAME("smartConfigV5Append(_:)");

/// Sets the fourteen pacing values from as many bytes. A shorter buffer changes nothing. Running senders
/// follow.
- (void)SmartConfigV5_SetProperty:(NSData*)bytes ZOR_SWIFT_NAME("smartConfigV5SetProperty(_:)");

/// 1 mixes version 3 frames into later version 5 runs; any other value does not.
- (void)SmartConfigV5_MixV3Enable:(uint8_t)flag ZOR_SWIFT_NAME("smartConfigV5MixV3Enable(_:)");

/// Starts a listener on port 25010 and a version 3 run of `TIMEOUT` milliseconds. When the port is taken it
/// changes nothing.
- (void)SmartConfigV3_Start:(NSString*)SSID
                   PASSWORD:(NSString*)PASSWORD
                    TIMEOUT:(int32_t)TIMEOUT ZOR_SWIFT_NAME("smartConfigV3Start(ssid:password:timeoutMs:)");

/// The same with the bytes of SSID and pass phrase.
- (void)SmartConfigV3_StartData:(NSData*)SSID
                       PASSWORD:(NSData*)PASSWORD
                        TIMEOUT:(int32_t)TIMEOUT
    ZOR_SWIFT_NAME("smartConfigV3Start(ssidData:password:timeoutMs:)");

/// What the latest smart configuration run and the latest listener have done.
- (ZORRunReport)SmartConfigReport ZOR_SWIFT_NAME("smartConfigReport()");

/// What the latest search has done.
- (ZORSearchReport)DeviceSearchReport ZOR_SWIFT_NAME("deviceSearchReport()");

/// What the latest upgrade has done.
- (ZORUpgradeReport)DeviceUpgradeReport ZOR_SWIFT_NAME("deviceUpgradeReport()");

@end

/// Provisions a module with one call: listens for its announcement and runs version 5 smart configuration for
/// 100 seconds. Call it from the application's thread.
@interface ZORBroadcast_SSID_Password : NSObject {
 @private
  ZORSuite* _myZorSuite;  ///< The suite of the latest start.
}

/// The suite of the latest start, or what was set since: the one that `stopBroadcast` stops. To hear of the
/// module, set its delegate after the start.
@property(nonatomic, retain, nullable) ZORSuite* myZorSuite;

/// Starts a run on a new suite, in place of the one before. If port 25010 is taken, the next free port is
/// used and named to the module in three bytes of application data. Blocks as the suite's starts do.
- (void)startBroadcast_SSID:(NSString*)SSID
                   Password:(NSString*)Password ZOR_SWIFT_NAME("startBroadcast(ssid:password:)");

/// The same with the bytes of SSID and pass phrase.
- (void)startBroadcast_SSIDData:(NSData*)SSID
                       Password:(NSData*)Password ZOR_SWIFT_NAME("startBroadcast(ssidData:password:)");

/// Stops the run and the listener, without waiting, and logs "SmartConfig v5 stop...".
- (void)stopBroadcast ZOR_SWIFT_NAME("stopBroadcast()");

/// Makes a line of the time of day and `text` on the main thread, and drops it. A subclass that wants the
/// lines of a start overrides it.
- (void)LogStr:(NSString*)text ZOR_SWIFT_NAME("logStr(_:)");

@end

/// Keeps what is sent from now on to a network interface, such as "en0"; an empty name, the default, leaves
/// the choice to the system's routes. Returns NO, with nothing changed, when there is no such interface. Any
/// thread.
FOUNDATION_EXPORT BOOL ZORSetInterface(NSString* name) ZOR_SWIFT_NAME("ZORSetInterface(_:)");

/// Sends the library's log lines, which hold SSID and pass phrase, to `sink`; NULL restores the system's log.
/// The sink is called with a line of bytes on the thread that writes it, several at a time. Any thread.
FOUNDATION_EXPORT void ZORSetLogSink(void (*ZOR_NULLABLE sink)(const char* line));

NS_ASSUME_NONNULL_END
