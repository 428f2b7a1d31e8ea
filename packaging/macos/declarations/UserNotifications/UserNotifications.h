#pragma once

#include <AppKit/AppKit.h>

enum UNAuthorizationOptions : NSUInteger { UNAuthorizationOptionAlert = 1 << 2 };
enum UNAuthorizationStatus : NSInteger { UNAuthorizationStatusNotDetermined = 0, UNAuthorizationStatusDenied = 1 };
using UNNotificationPresentationOptions = NSUInteger;
enum : NSUInteger {
    UNNotificationPresentationOptionList SINCE_MACOS(11.0) = 1 << 3,
    UNNotificationPresentationOptionBanner SINCE_MACOS(11.0) = 1 << 4
};

@interface UNNotificationContent : NSObject
- (NSString*)targetContentIdentifier;
@end
@interface UNMutableNotificationContent : UNNotificationContent
- (void)setTitle:(NSString*)title;
- (void)setBody:(NSString*)body;
- (void)setTargetContentIdentifier:(NSString*)targetContentIdentifier;
@end
@interface UNNotificationTrigger : NSObject
@end
@interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(UNNotificationTrigger*)trigger;
- (UNNotificationContent*)content;
@end
@interface UNNotification : NSObject
- (UNNotificationRequest*)request;
@end
@interface UNNotificationResponse : NSObject
- (UNNotification*)notification;
- (NSString*)actionIdentifier;
@end
extern NSString* const UNNotificationDefaultActionIdentifier;
@interface UNNotificationSettings : NSObject
- (UNAuthorizationStatus)authorizationStatus;
@end

@class UNUserNotificationCenter;
@protocol UNUserNotificationCenterDelegate
@optional
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions options))completionHandler;
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler;
@end

@interface UNUserNotificationCenter : NSObject
+ (UNUserNotificationCenter*)currentNotificationCenter;
- (void)setDelegate:(id<UNUserNotificationCenterDelegate>)delegate;
- (void)requestAuthorizationWithOptions:(NSUInteger)options
                      completionHandler:(void (^)(BOOL granted, NSError* error))completionHandler;
- (void)getNotificationSettingsWithCompletionHandler:(void (^)(UNNotificationSettings* settings))completionHandler;
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(void (^)(NSError* error))completionHandler;
@end
