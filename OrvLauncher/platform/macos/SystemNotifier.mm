#include "OrvLauncher/platform/SystemNotifier.h"

#include <QCoreApplication>
#include <QHash>
#include <QUuid>

#import <UserNotifications/UserNotifications.h>

namespace {

NSString* const readyCategory = @"orvlauncher.ready";
NSString* const browserAction = @"orvlauncher.open-browser";
NSString* const projectKey = @"projectID";
NSString* const addressKey = @"openURL";
NSString* const partKindKey = @"part";
NSString* const partKey = @"partKey";

void onMainThread(std::function<void()> work) {
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(work), Qt::QueuedConnection);
}

} // namespace

@interface OrvNotificationDelegate : NSObject <UNUserNotificationCenterDelegate>
@property(nonatomic) orv::Notifying* notifier; // nil when it is gone; main thread
@end

@implementation OrvNotificationDelegate

// Also while the application is in front: whether to post then is decided before.
- (void)userNotificationCenter:(UNUserNotificationCenter*)center
       willPresentNotification:(UNNotification*)notification
         withCompletionHandler:(void (^)(UNNotificationPresentationOptions))completion {
    completion(UNNotificationPresentationOptionBanner | UNNotificationPresentationOptionList);
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completion {
    NSDictionary* facts = response.notification.request.content.userInfo;
    const QString project = QString::fromNSString(facts[projectKey] ?: @"");
    const QString address = QString::fromNSString(facts[addressKey] ?: @"");
    const orv::NotificationPart part{
        static_cast<orv::NotificationPart::Kind>([facts[partKindKey] intValue]),
        QString::fromNSString(facts[partKey] ?: @"")};
    const bool opensBrowser = [response.actionIdentifier isEqualToString:browserAction];
    const bool isDismissed = [response.actionIdentifier isEqualToString:UNNotificationDismissActionIdentifier];
    onMainThread([self, project, part, address, opensBrowser, isDismissed] {
        if (self.notifier == nullptr || isDismissed) {
            return;
        }
        if (opensBrowser && self.notifier->addressClicked) {
            self.notifier->addressClicked(QUrl(address));
        } else if (self.notifier->projectClicked) {
            self.notifier->projectClicked(project, part);
        }
    });
    completion();
}

@end

namespace orv {

namespace {

NotificationStatus::Kind kindOf(UNAuthorizationStatus status) {
    switch (status) {
    case UNAuthorizationStatusNotDetermined:
        return NotificationStatus::Kind::notDetermined;
    case UNAuthorizationStatusDenied:
        return NotificationStatus::Kind::denied;
    default:
        return NotificationStatus::Kind::allowed;
    }
}

class CentreNotifier : public Notifying {
public:
    CentreNotifier() : m_delegate([[OrvNotificationDelegate alloc] init]) {
        m_delegate.notifier = this;
        centre().delegate = m_delegate;
        NSString* const title = QCoreApplication::translate("SystemNotifier", "Open in browser").toNSString();
        UNNotificationAction* open = [UNNotificationAction actionWithIdentifier:browserAction
                                                                          title:title
                                                                        options:UNNotificationActionOptionForeground];
        UNNotificationCategory* ready = [UNNotificationCategory categoryWithIdentifier:readyCategory
                                                                               actions:@[ open ]
                                                                     intentIdentifiers:@[]
                                                                               options:0];
        [centre() setNotificationCategories:[NSSet setWithObject:ready]];
    }
    ~CentreNotifier() override {
        m_delegate.notifier = nullptr;
        centre().delegate = nil;
    }

    void post(const NotificationRequest& request) override {
        UNMutableNotificationContent* content = [[UNMutableNotificationContent alloc] init];
        content.title = request.title.toNSString();
        content.body = request.body.toNSString();
        NSMutableDictionary* facts = [NSMutableDictionary dictionary];
        if (request.projectID) {
            facts[projectKey] = request.projectID->toNSString();
        }
        facts[partKindKey] = @(static_cast<int>(request.part.kind));
        facts[partKey] = request.part.key.toNSString();
        if (request.openURL) {
            facts[addressKey] = request.openURL->toNSString();
            content.categoryIdentifier = readyCategory;
        }
        content.userInfo = facts;
        // The last one of the same identifier is replaced.
        QString& identifier = m_identifiers[request.subject];
        if (!request.replaces || identifier.isEmpty()) {
            identifier = QUuid::createUuid().toString();
        }
        [centre() addNotificationRequest:[UNNotificationRequest requestWithIdentifier:identifier.toNSString()
                                                                              content:content
                                                                              trigger:nil]
                   withCompletionHandler:nil];
    }

    void findStatus(Ask ask, std::function<void(const NotificationStatus&)> answer) override {
        OrvNotificationDelegate* delegate = m_delegate;
        const auto look = ^{
          [centre() getNotificationSettingsWithCompletionHandler:^(UNNotificationSettings* settings) {
            const NotificationStatus status{kindOf(settings.authorizationStatus), {}};
            onMainThread([delegate, answer, status] {
                if (delegate.notifier != nullptr) {
                    answer(status);
                }
            });
          }];
        };
        if (ask == Ask::systemOnly) {
            look();
            return;
        }
        [centre() requestAuthorizationWithOptions:UNAuthorizationOptionAlert | UNAuthorizationOptionSound
                                completionHandler:^(BOOL, NSError*) {
                                  look();
                                }];
    }

private:
    static UNUserNotificationCenter* centre() { return UNUserNotificationCenter.currentNotificationCenter; }

    OrvNotificationDelegate* m_delegate;
    QHash<QString, QString> m_identifiers; ///< of the last notification of each subject
};

} // namespace

std::unique_ptr<Notifying> makeSystemNotifier() {
    // Outside of an application bundle the centre raises an exception.
    if (NSBundle.mainBundle.bundleIdentifier == nil) {
        return nullptr;
    }
    return std::make_unique<CentreNotifier>();
}

} // namespace orv
