#include "Desktop/Native/Notifications.h"
#include "System/Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QHash>

namespace {
const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
constexpr int timeout = 3000; // milliseconds

QDBusPendingCall call(const QString& method, const QVariantList& arguments = {}) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, service, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().asyncCall(message, timeout);
}
} // namespace

/// The desktop's notification service. It is preferred because QSystemTrayIcon sends messages without an
/// action, so a click on one cannot be reported.
class NotificationService : public QObject {
    Q_OBJECT

  public:
    explicit NotificationService(Notifications& owner) : QObject(&owner), m_owner(owner) {
        // With a sender's name Qt would block while it asks the bus for the name's owner.
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.connect({}, path, service, QStringLiteral("ActionInvoked"), this,
                    SLOT(actionInvoked(uint, QString)));
        bus.connect({}, path, service, QStringLiteral("NotificationClosed"), this, SLOT(closed(uint)));
    }

    void show(const QString& title, const QString& text, const QString& domain) {
        auto* const watcher = new QDBusPendingCallWatcher(call(QStringLiteral("GetCapabilities")), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [=, this] {
            watcher->deleteLater();
            const QDBusPendingReply<QStringList> capabilities = *watcher;
            if (capabilities.isError())
                m_owner.showAtItem(title, text, domain);
            else
                send(title, text, domain, capabilities.value().contains(QLatin1String("body-markup")));
        });
    }

  private Q_SLOTS:

    void actionInvoked(uint id, const QString& /*action*/) {
        if (const auto message = m_domains.constFind(id); message != m_domains.constEnd())
            Q_EMIT m_owner.clicked(*message);
    }

    void closed(uint id) { m_domains.remove(id); }

  private:
    void send(const QString& title, const QString& text, const QString& domain, bool markup) {
        constexpr uint newMessage = 0;
        constexpr int defaultDuration = -1;
        const QStringList actions{QStringLiteral("default"), QStringLiteral("Öffnen")};
        const QVariantMap hints{{QStringLiteral("desktop-entry"), QString(applicationIdentifier)}};
        auto* const watcher = new QDBusPendingCallWatcher(
            call(QStringLiteral("Notify"),
                 {QStringLiteral("Harvellon Connect"), newMessage, QString(applicationIdentifier), title,
                  markup ? text.toHtmlEscaped() : text, actions, hints, defaultDuration}),
            this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [=, this] {
            watcher->deleteLater();
            const QDBusPendingReply<uint> id = *watcher;
            if (id.isError())
                m_owner.showAtItem(title, text, domain);
            else
                m_domains.insert(id.value(), domain);
        });
    }

    Notifications& m_owner;
    QHash<uint, QString> m_domains; ///< by the id of each notification that is on the screen
};

void Notifications::prepare() {} // the service is asked for at the first notification

void Notifications::look() {} // the desktop tells nobody

void Notifications::show(const QString& title, const QString& text, const QString& domain) {
    if (!m_service)
        m_service = new NotificationService(*this);
    m_service->show(title, text, domain);
}

#include "Notifications_linux.moc"
