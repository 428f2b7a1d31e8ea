#include "Desktop/Native/Appearance.h"

#include <QPointer>

#import <AppKit/AppKit.h>

// The palette follows the system's dark mode by itself; what it does not contain are the user's choices for
// accessibility.
void Appearance::watchSettings() {
    const QPointer<Appearance> guard(this); // the observer stays for the life of the process
    const auto read = ^(NSNotification* /*change*/) {
        if (!guard)
            return;
        NSWorkspace* const workspace = [NSWorkspace sharedWorkspace];
        guard->setReducedMotion([workspace accessibilityDisplayShouldReduceMotion]);
        guard->setHighContrast([workspace accessibilityDisplayShouldIncreaseContrast]);
    };
    read(nil);
    [[[NSWorkspace sharedWorkspace] notificationCenter]
        addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                    object:nil
                     queue:[NSOperationQueue mainQueue]
                usingBlock:read];
}
