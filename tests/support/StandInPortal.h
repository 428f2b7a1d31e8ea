#pragma once

#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

using namespace Qt::StringLiterals;

/// A desktop's portal for global shortcuts. Unless it is too old to ask, it insists on knowing who calls.
/// Main thread.
class StandInPortal : public QDBusVirtualObject {
  public:
    enum class Registry { absent, present, late, knowsAlready, knowsNoSuchProgram, bindsNothing };

    explicit StandInPortal(Registry registry) : m_registry(registry), m_known(registry == Registry::absent) {
        if (!m_bus.registerVirtualObject(root, this) || !m_bus.registerService(portal + u"Desktop"_s))
            qFatal("no portal");
    }

    ~StandInPortal() override {
        m_bus.unregisterService(portal + u"Desktop"_s); // waits, so that the next one can have it
        QDBusConnection::disconnectFromBus(portal);
    }

    void press() {
        announce(root, u"GlobalShortcuts"_s, u"Activated"_s,
                 {QVariant::fromValue(m_session), u"toggle-panel"_s, 1ULL, QVariantMap()});
    }

    void closeSession() { announce(m_session.path(), u"Session"_s, u"Closed"_s, {}); }

    int bindings = 0;

  private:
    void announce(const QString& path, const QString& interface, const QString& name,
                  QVariantList arguments) {
        auto signal = QDBusMessage::createSignal(path, portal + interface, name);
        signal.setArguments(arguments);
        m_bus.send(signal);
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& /*bus*/) override {
        if (call.member() == u"Register"_s) {
            if (!call.arguments().contains(u"com.harvellon.HarvellonConnect"_s) ||
                m_registry == Registry::absent)
                return false;
            QTest::qWait(m_registry == Registry::late ? 300 : 0);
            m_known = m_registry != Registry::knowsNoSuchProgram;
            const auto refusal = call.createErrorReply(QDBusError::Failed, {});
            return m_bus.send(m_registry < Registry::knowsAlready ? call.createReply() : refusal);
        }
        if (!m_known)
            return m_bus.send(call.createErrorReply(portal + u"Error.NotAllowed"_s, {}));
        const auto options = qdbus_cast<QVariantMap>(call.arguments().constLast());
        const QString sender = call.service().mid(1).replace(u'.', u'_');
        const QString request = root + u"/request/%1/%2"_s.arg(sender, options[u"handle_token"_s].toString());
        const bool binds = call.member() == u"BindShortcuts"_s;
        const bool nothing = m_registry == Registry::bindsNothing;
        bindings += binds && !nothing ? 1 : 0;
        if (!binds)
            m_session.setPath(root + u'/' + options[u"session_handle_token"_s].toString());
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        const QVariant bound = nothing ? QVariantList() : call.arguments().at(binds ? 1 : 0);
        const QVariantMap results{{u"session_handle"_s, m_session.path()}, {u"shortcuts"_s, bound}};
        announce(request, u"Request"_s, u"Response"_s, {0U, results});
        return true;
    }

    const QString root = u"/org/freedesktop/portal/desktop"_s;
    const QString portal = u"org.freedesktop.portal."_s;
    const Registry m_registry;
    bool m_known;
    QDBusObjectPath m_session;
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, portal);
};
