#pragma once

#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

/// A desktop's portal for global shortcuts. Unless it is too old to ask, it insists on knowing who calls.
/// Main thread.
class StandInPortal : public QDBusVirtualObject {
  public:
    enum class Registry { absent, present, late, knowsAlready, knowsNoSuchProgram, bindsNothing };

    explicit StandInPortal(Registry registry) : m_registry(registry), m_known(registry == Registry::absent) {
        if (!m_bus.registerVirtualObject(root, this) ||
            !m_bus.registerService(portal + QLatin1String("Desktop")))
            qFatal("no portal");
    }

    ~StandInPortal() override {
        m_bus.unregisterService(portal + QLatin1String("Desktop")); // waits, so that the next one can have it
        QDBusConnection::disconnectFromBus(portal);
    }

    void press() {
        announce(root, "GlobalShortcuts", "Activated",
                 {QVariant::fromValue(m_session), QStringLiteral("toggle-panel"), 1ULL, QVariantMap()});
    }

    void closeSession() { announce(m_session.path(), "Session", "Closed", {}); }

    int bindings = 0;

  private:
    void announce(const QString& path, const char* interface, const char* name,
                  const QVariantList& arguments) {
        auto signal =
            QDBusMessage::createSignal(path, portal + QLatin1String(interface), QLatin1String(name));
        signal.setArguments(arguments);
        m_bus.send(signal);
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& /*bus*/) override {
        if (call.member() == QLatin1String("Register")) {
            if (m_registry == Registry::absent ||
                call.arguments().at(0) != QLatin1String("com.harvellon.HarvellonConnect"))
                return false;
            QTest::qWait(m_registry == Registry::late ? 300 : 0);
            m_known = m_registry != Registry::knowsNoSuchProgram;
            return m_bus.send(m_registry < Registry::knowsAlready
                                  ? call.createReply()
                                  : call.createErrorReply(QDBusError::Failed, {}));
        }
        if (!m_known)
            return m_bus.send(call.createErrorReply(portal + QLatin1String("Error.NotAllowed"), {}));
        const auto options = qdbus_cast<QVariantMap>(call.arguments().constLast());
        const QString sender = call.service().mid(1).replace(u'.', u'_');
        const QDBusObjectPath request(
            root + QStringLiteral("/request/%1/%2")
                       .arg(sender, options.value(QStringLiteral("handle_token")).toString()));
        const bool binds = call.member() == QLatin1String("BindShortcuts");
        const bool nothing = m_registry == Registry::bindsNothing;
        if (binds)
            bindings += nothing ? 0 : 1;
        else
            m_session.setPath(root + u'/' + options.value(QStringLiteral("session_handle_token")).toString());
        m_bus.send(call.createReply(QVariant::fromValue(request)));
        const QVariant bound = nothing ? QVariantList() : call.arguments().at(binds ? 1 : 0);
        announce(request.path(), "Request", "Response",
                 {0U, QVariantMap{{QStringLiteral("session_handle"), m_session.path()},
                                  {QStringLiteral("shortcuts"), bound}}});
        return true;
    }

    const QString root = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString portal = QStringLiteral("org.freedesktop.portal.");
    const Registry m_registry;
    bool m_known;
    QDBusObjectPath m_session;
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, portal);
};
