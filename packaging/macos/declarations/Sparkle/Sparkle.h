#pragma once

#include <AppKit/AppKit.h>

@protocol SPUUpdaterDelegate
@end
@protocol SPUStandardUserDriverDelegate
@end

@interface SPUUpdater : NSObject
- (void)setAutomaticallyChecksForUpdates:(BOOL)checks;
- (void)setAutomaticallyDownloadsUpdates:(BOOL)downloads;
@end

@interface SPUStandardUpdaterController : NSObject
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id<SPUUpdaterDelegate>)updaterDelegate
                     userDriverDelegate:(id<SPUStandardUserDriverDelegate>)userDriverDelegate;
- (SPUUpdater*)updater;
- (void)checkForUpdates:(id)sender;
@end
