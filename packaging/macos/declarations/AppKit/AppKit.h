#pragma once

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
    NSWindowCollectionBehaviorFullScreenAuxiliary = 1 << 8
};

__attribute__((objc_root_class)) @interface NSObject
+ (instancetype)alloc;
@end
@interface NSString : NSObject
@end
@interface NSError : NSObject
@end
@interface NSApplication : NSObject
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps;
@end
@interface NSWindow : NSObject
- (void)setCollectionBehavior:(NSUInteger)behavior;
@end
@interface NSView : NSObject
- (NSWindow*)window;
@end
@interface NSImage : NSObject
+ (NSImage*)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description;
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
