#include "System/HotkeyManager.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

namespace {

/// A hot key that counts what it hears.
struct Listener {
    Listener() {
        manager.onPress = [this] { ++presses; };
        manager.onRefused = [this](const QString& reason) { refusals.append(reason); };
    }

    HotkeyManager manager;
    int presses = 0;
    QStringList refusals;
};

/// The desktop's side of global shortcuts, on a bus connection of its own: no desktop of Debian 12 has it
/// without a running compositor.
class Portal : public QDBusVirtualObject {
  public:
    explicit Portal(uint bindResponse)
        : m_bindResponse(bindResponse),
          m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"))) {
        m_bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
        m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }

    ~Portal() override {
        m_bus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
        m_bus.unregisterObject(path, QDBusConnection::UnregisterTree);
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    }
    Q_DISABLE_COPY_MOVE(Portal)

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        calls.append(message.member());
        if (message.member() == QStringLiteral("CreateSession")) {
            const auto options = qdbus_cast<QVariantMap>(message.arguments().at(0));
            session = handle(QStringLiteral("session"), message,
                             options.value(QStringLiteral("session_handle_token")));
            answer(message, options, 0, {{QStringLiteral("session_handle"), session}});
        } else if (message.member() == QStringLiteral("BindShortcuts")) {
            signature = message.signature();
            boundSession = message.arguments().at(0).value<QDBusObjectPath>().path();
            const auto shortcuts = message.arguments().at(1).value<QDBusArgument>();
            shortcuts.beginArray();
            shortcuts.beginStructure();
            shortcuts >> shortcut >> properties;
            shortcuts.endStructure();
            shortcuts.endArray();
            answer(message, qdbus_cast<QVariantMap>(message.arguments().at(3)), m_bindResponse, {});
        } else {
            closed = message.path();
            m_bus.send(message.createReply());
        }
        return true;
    }

    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    QStringList calls;
    QString session;
    QString boundSession;
    QString signature;
    QString shortcut;
    QVariantMap properties;
    QString closed;

  private:
    [[nodiscard]] QString handle(const QString& kind, const QDBusMessage& message,
                                 const QVariant& token) const {
        const QString sender = message.service().mid(1).replace(u'.', u'_');
        return QStringLiteral("%1/%2/%3/%4").arg(path, kind, sender, token.toString());
    }

    void answer(const QDBusMessage& message, const QVariantMap& options, uint response,
                const QVariantMap& results) {
        const QString request =
            handle(QStringLiteral("request"), message, options.value(QStringLiteral("handle_token")));
        // Before the reply, as a portal may.
        QDBusMessage signal = QDBusMessage::createSignal(
            request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        signal << response << results;
        m_bus.send(signal);
        m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    }

    uint m_bindResponse;
    QDBusConnection m_bus;
};

} // namespace

class HotkeyPortalTest : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void cleanup() { qputenv("XDG_SESSION_TYPE", "x11"); }

    void thePortalMayRefuse() {
        qputenv("XDG_SESSION_TYPE", "wayland");
        Portal portal(1);
        Listener key;
        key.manager.registerKey();
        QTRY_COMPARE(key.refusals,
                     QStringList{QStringLiteral("Der Desktop hat die Taste F19 nicht freigegeben.")});
        key.manager.registerKey();
        QTRY_COMPARE(portal.calls.count(QStringLiteral("BindShortcuts")), 2);
    }

    void waylandWithoutAPortalSaysSo() {
        qputenv("XDG_SESSION_TYPE", "wayland");
        Listener key;
        key.manager.registerKey();
        QVERIFY(key.refusals.isEmpty());
        QTRY_COMPARE(key.refusals, QStringList{QStringLiteral(
                                       "Dieser Desktop bietet keine systemweiten Tastenkürzel an.")});
    }
};

QTEST_GUILESS_MAIN(HotkeyPortalTest)
#include "tst_hotkey_portal.moc"
