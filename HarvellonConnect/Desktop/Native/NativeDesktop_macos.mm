#include "Desktop/Native/NativeDesktop.h"

#include <QImage>
#include <QString>
#include <QWindow>

#import <AppKit/AppKit.h>

#include <algorithm>
#include <utility>

@interface ReopenListener : NSObject
- (void)reopen:(NSAppleEventDescriptor*)event withReply:(NSAppleEventDescriptor*)reply;
@end

@implementation ReopenListener {
  @public
    std::function<void()> _show;
}
- (void)reopen:(NSAppleEventDescriptor*)event withReply:(NSAppleEventDescriptor*)reply {
    _show();
}
@end

bool hasScreen() {
    return true;
}

void becomeAccessory() {
    [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

void onStartedAgain(std::function<void()> show) {
    static ReopenListener* const listener = [[ReopenListener alloc] init]; // the manager does not retain it
    listener->_show = std::move(show);
    [[NSAppleEventManager sharedAppleEventManager] setEventHandler:listener
                                                       andSelector:@selector(reopen:withReply:)
                                                     forEventClass:kCoreEventClass
                                                        andEventID:kAEReopenApplication];
}

bool trayIsPresent() {
    return true;
}

void activateApplication() {
    [NSApp unhideWithoutActivation];
    [NSApp activateIgnoringOtherApps:YES];
}

void giveFocusBack() {
    [NSApp hide:nil];
}

void showInEverySpace(QWindow& window) {
    NSView* const view = (__bridge NSView*)reinterpret_cast<void*>(window.winId());
    NSWindow* const native = [view window];
    [native setCollectionBehavior:NSWindowCollectionBehaviorCanJoinAllSpaces |
                                  NSWindowCollectionBehaviorCanJoinAllApplications |
                                  NSWindowCollectionBehaviorTransient |
                                  NSWindowCollectionBehaviorFullScreenAuxiliary];
    if ([native isKindOfClass:[NSPanel class]]) // the style is valid for panels only
        [native setStyleMask:[native styleMask] | NSWindowStyleMaskNonactivatingPanel];
}

void keepVolumesClean() {
    const CFStringRef suite = CFSTR("com.apple.desktopservices");
    for (const CFStringRef key : {CFSTR("DSDontWriteNetworkStores"), CFSTR("DSDontWriteUSBStores")})
        CFPreferencesSetAppValue(key, kCFBooleanTrue, suite);
    CFPreferencesAppSynchronize(suite);
}

QImage nativeSymbol(const QString& name, int pixels) {
    @autoreleasepool {
        NSImage* const symbol = [NSImage imageWithSystemSymbolName:name.toNSString() accessibilityDescription:nil];
        if (symbol == nil)
            return {};
        QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        CGColorSpaceRef colors = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
        CGContextRef context =
            CGBitmapContextCreate(image.bits(), size_t(pixels), size_t(pixels), 8, size_t(image.bytesPerLine()), colors,
                                  uint32_t(kCGImageAlphaPremultipliedFirst) | uint32_t(kCGBitmapByteOrder32Host));
        CGColorSpaceRelease(colors);
        if (context == nullptr)
            return {};
        // The largest size in the square that keeps the symbol's proportions.
        const NSSize drawn = [symbol size];
        const CGFloat scale = pixels / std::max(drawn.width, drawn.height);
        const NSRect place = NSMakeRect((pixels - drawn.width * scale) / 2, (pixels - drawn.height * scale) / 2,
                                        drawn.width * scale, drawn.height * scale);
        [NSGraphicsContext saveGraphicsState];
        [NSGraphicsContext setCurrentContext:[NSGraphicsContext graphicsContextWithCGContext:context flipped:NO]];
        [symbol drawInRect:place];
        [NSGraphicsContext restoreGraphicsState];
        CGContextRelease(context);
        return image;
    }
}
