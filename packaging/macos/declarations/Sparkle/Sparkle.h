#pragma once

#include <AppKit/AppKit.h>

@protocol SPUUpdaterDelegate
@end
@protocol SPUStandardUserDriverDelegate
@end

@interface SPUStandardUpdaterController : NSObject
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:(id<SPUStandardUserDriverDelegate>)userDriverDelegate;
- (void)checkForUpdates:(id)sender;
@end
