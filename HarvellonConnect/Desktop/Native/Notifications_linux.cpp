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
constexpr int patience = 3000; // milliseconds

QDBusPendingCall call(const QString& method, const QVariantList& arguments = {}) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, service, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().asyncCall(message, patience);
}
} // namespace

/// The desktop's own service: what the status item shows on Linux has nothing that a click could choose.
class NotificationService : public QObject {
    Q_OBJECT

  public:
    explicit NotificationService(Notifications& owner) : QObject(&owner), m_owner(owner) {
        // Naming the sender would make Qt ask the bus for its owner, and stand still meanwhile.
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.connect({}, path, service, QStringLiteral("ActionInvoked"), this,
                    SLOT(actionInvoked(uint, QString)));
        bus.connect({}, path, service, QStringLiteral("NotificationClosed"), this, SLOT(closed(uint)));
    }

    void show(const QString& title, const QString& text, const QString& domain) {
        auto* const asked = new QDBusPendingCallWatcher(call(QStringLiteral("GetCapabilities")), this);
        connect(asked, &QDBusPendingCallWatcher::finished, this, [=, this] {
            asked->deleteLater();
            const QDBusPendingReply<QStringList> capabilities = *asked;
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
        constexpr int asLongAsUsual = -1;
        const QStringList actions{QStringLiteral("default"), QStringLiteral("Öffnen")};
        const QVariantMap hints{{QStringLiteral("desktop-entry"), QString(applicationIdentifier)}};
        auto* const sent = new QDBusPendingCallWatcher(
            call(QStringLiteral("Notify"),
                 {QStringLiteral("Harvellon Connect"), newMessage, QString(applicationIdentifier), title,
                  markup ? text.toHtmlEscaped() : text, actions, hints, asLongAsUsual}),
            this);
        connect(sent, &QDBusPendingCallWatcher::finished, this, [=, this] {
            sent->deleteLater();
            const QDBusPendingReply<uint> id = *sent;
            if (id.isError())
                m_owner.showAtItem(title, text, domain);
            else
                m_domains.insert(id.value(), domain);
        });
    }

    Notifications& m_owner;
    QHash<uint, QString> m_domains; ///< of the messages that are on the screen
};

void Notifications::show(const QString& title, const QString& text, const QString& domain) {
    if (!m_service)
        m_service = new NotificationService(*this);
    m_service->show(title, text, domain);
}

#include "Notifications_linux.moc"
