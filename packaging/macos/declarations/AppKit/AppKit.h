#pragma once

#include <Availability.h>
#include <CoreFoundation/CoreFoundation.h>

using BOOL = bool;
using NSInteger = long;
using NSUInteger = unsigned long;
using CGFloat = double;
#define YES true
#define NO false
#define nil nullptr

struct NSSize {
    CGFloat width;
    CGFloat height;
};
struct NSRect {
    CGFloat x;
    CGFloat y;
    NSSize size;
};
NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h);

using CGColorSpaceRef = struct CGColorSpace*;
using CGContextRef = struct CGContext*;
enum { kCGImageAlphaPremultipliedFirst = 2 };
enum { kCGBitmapByteOrder32Host = 2 << 12 };

extern "C" {
extern const CFStringRef kCGColorSpaceSRGB;
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);
void CGColorSpaceRelease(CGColorSpaceRef space);
CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef space, uint32_t bitmapInfo);
void CGContextRelease(CGContextRef c);
}

enum NSApplicationActivationPolicy : NSInteger { NSApplicationActivationPolicyAccessory = 1 };
enum NSWindowCollectionBehavior : NSUInteger {
    NSWindowCollectionBehaviorCanJoinAllSpaces = 1 << 0,
    NSWindowCollectionBehaviorTransient = 1 << 3,
    NSWindowCollectionBehaviorFullScreenAuxiliary = 1 << 8,
    NSWindowCollectionBehaviorCanJoinAllApplications SINCE_MACOS(13.0) = 1 << 18
};
enum NSWindowStyleMask : NSUInteger { NSWindowStyleMaskNonactivatingPanel = 1 << 7 };

__attribute__((objc_root_class)) @interface NSObject
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
- (BOOL)isKindOfClass:(Class)aClass;
@end
@interface NSString : NSObject
- (BOOL)isEqualToString:(NSString*)aString;
@end
@interface NSError : NSObject
@end
@interface NSApplication : NSObject
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)hide:(id)sender;
- (void)unhideWithoutActivation;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps;
- (void)activate SINCE_MACOS(14.0);
@end
@interface NSWindow : NSObject
- (void)setCollectionBehavior:(NSUInteger)behavior;
- (NSUInteger)styleMask;
- (void)setStyleMask:(NSUInteger)styleMask;
@end
@interface NSPanel : NSWindow
@end
@interface NSView : NSObject
- (NSWindow*)window;
@end
@interface NSImage : NSObject
+ (NSImage*)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description
    SINCE_MACOS(11.0);
- (NSSize)size;
- (void)drawInRect:(NSRect)rect;
@end
@interface NSGraphicsContext : NSObject
+ (NSGraphicsContext*)graphicsContextWithCGContext:(CGContextRef)graphicsPort flipped:(BOOL)initialFlippedState;
+ (void)setCurrentContext:(NSGraphicsContext*)context;
+ (void)saveGraphicsState;
+ (void)restoreGraphicsState;
@end
extern NSApplication* NSApp;

@interface NSBundle : NSObject
+ (NSBundle*)mainBundle;
- (NSString*)bundleIdentifier;
@end
@interface NSNotification : NSObject
@end
@interface NSOperationQueue : NSObject
+ (NSOperationQueue*)mainQueue;
@end
@interface NSNotificationCenter : NSObject
- (id)addObserverForName:(NSString*)name
                  object:(id)obj
                   queue:(NSOperationQueue*)queue
              usingBlock:(void (^)(NSNotification* note))block;
@end
@interface NSWorkspace : NSObject
+ (NSWorkspace*)sharedWorkspace;
- (NSNotificationCenter*)notificationCenter;
- (BOOL)accessibilityDisplayShouldIncreaseContrast;
- (BOOL)accessibilityDisplayShouldReduceMotion;
@end
extern NSString* const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification;

using AEEventClass = unsigned int;
using AEEventID = unsigned int;
enum { kCoreEventClass = 0x61657674, kAEReopenApplication = 0x72617070 };
@interface NSAppleEventDescriptor : NSObject
@end
@interface NSAppleEventManager : NSObject
+ (NSAppleEventManager*)sharedAppleEventManager;
- (void)setEventHandler:(id)handler
            andSelector:(SEL)handleEventSelector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID;
@end

using dispatch_queue_t = NSObject*;
extern "C" void dispatch_async(dispatch_queue_t queue, void (^block)(void));
extern "C" dispatch_queue_t dispatch_get_main_queue();
