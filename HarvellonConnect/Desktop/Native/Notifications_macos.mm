#include "Desktop/Native/Notifications.h"

#include <QPointer>
#include <QUuid>

#import <UserNotifications/UserNotifications.h>

@interface NotificationListener : NSObject <UNUserNotificationCenterDelegate>
@end

@implementation NotificationListener {
  @public
    QPointer<Notifications> _owner;
}

// The system would show nothing while the program is active.
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions options))completionHandler {
    completionHandler(UNNotificationPresentationOptionBanner | UNNotificationPresentationOptionList);
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler {
    if ([[response actionIdentifier] isEqualToString:UNNotificationDefaultActionIdentifier]) {
        UNNotificationContent* const content = [[[response notification] request] content];
        const QString domain = QString::fromNSString([content targetContentIdentifier]);
        const QPointer<Notifications> owner = _owner;
        dispatch_async(dispatch_get_main_queue(), ^{
            if (owner)
                Q_EMIT owner->clicked(domain);
        });
    }
    completionHandler();
}
@end

/// The system's notification centre. It calls back on threads of its own. A program that is no bundle has none.
class NotificationService : public QObject {
  public:
    explicit NotificationService(Notifications& owner) : QObject(&owner), m_owner(&owner) {
        m_listener->_owner = m_owner;
        [m_center setDelegate:m_listener]; // which the centre does not retain
    }

    // By value: a block would keep a reference, not what it refers to.
    void show(QString title, QString text, const QString& domain) {
        UNMutableNotificationContent* const content = [[UNMutableNotificationContent alloc] init];
        [content setTitle:title.toNSString()];
        [content setBody:text.toNSString()];
        [content setTargetContentIdentifier:domain.toNSString()];
        UNNotificationRequest* const request =
            [UNNotificationRequest requestWithIdentifier:QUuid::createUuid().toString().toNSString()
                                                 content:content
                                                 trigger:nil];
        const QPointer<Notifications> owner = m_owner;
        UNUserNotificationCenter* const center = m_center;
        const auto tell = ^(BOOL shown) {
            dispatch_async(dispatch_get_main_queue(), ^{
                if (owner)
                    owner->answered(shown, title, text);
            });
        };
        // The system asks the user once, at the first of these calls; later ones yield the choice.
        [m_center requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                                completionHandler:^(BOOL granted, NSError* /*error*/) {
                                    if (!granted)
                                        tell(NO);
                                    else
                                        [center addNotificationRequest:request
                                                 withCompletionHandler:^(NSError* failure) {
                                                     tell(failure == nil);
                                                 }];
                                }];
    }

    void look() {
        const QPointer<Notifications> owner = m_owner;
        [m_center getNotificationSettingsWithCompletionHandler:^(UNNotificationSettings* settings) {
            const UNAuthorizationStatus status = [settings authorizationStatus];
            dispatch_async(dispatch_get_main_queue(), ^{
                if (owner && status != UNAuthorizationStatusNotDetermined)
                    owner->answered(status != UNAuthorizationStatusDenied, {}, {});
            });
        }];
    }

  private:
    const QPointer<Notifications> m_owner;
    NotificationListener* const m_listener = [[NotificationListener alloc] init];
    UNUserNotificationCenter* const m_center = [UNUserNotificationCenter currentNotificationCenter];
};

// Before the event loop, because a click may have started the program.
void Notifications::prepare() {
    if ([[NSBundle mainBundle] bundleIdentifier] != nil)
        m_service = new NotificationService(*this);
}

void Notifications::show(const QString& title, const QString& text, const QString& domain) {
    if (m_service)
        m_service->show(title, text, domain);
    else
        showAtItem(title, text, domain);
}

void Notifications::look() {
    if (m_service)
        m_service->look();
}
