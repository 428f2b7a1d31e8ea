#pragma once

#include <AppKit/AppKit.h>

enum SMAppServiceStatus : NSInteger { SMAppServiceStatusEnabled = 1, SMAppServiceStatusRequiresApproval = 2 };

SINCE_MACOS(13.0) @interface SMAppService : NSObject
+ (SMAppService*)mainAppService;
- (BOOL)registerAndReturnError:(NSError* __autoreleasing*)error;
- (BOOL)unregisterAndReturnError:(NSError* __autoreleasing*)error;
@property(readonly) SMAppServiceStatus status;
@end
