#include "System/Native/HotkeyPortal_linux.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");
const QString shortcutName = QStringLiteral("toggle-panel");
constexpr uint granted = 0;

/// Naming the sender would make Qt ask the bus for its owner, and stand still meanwhile. The paths of our
/// requests and of our session hold random tokens, which other programs on the bus do not know.
const QString anySender;

QString freshToken() {
    return QStringLiteral("harvellon_") + QUuid::createUuid().toString(QUuid::Id128);
}

QString noPortal() {
    return QStringLiteral("Dieser Desktop bietet keine systemweiten Tastenkürzel an.");
}

QString userDeclined() {
    return QStringLiteral("Der Desktop hat die Taste F19 nicht freigegeben.");
}

} // namespace

/// One entry of BindShortcuts: its name and its properties.
struct PortalShortcut {
    QString name;
    QVariantMap properties;
};
Q_DECLARE_METATYPE(PortalShortcut)

static QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.name << shortcut.properties;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.name >> shortcut.properties;
    argument.endStructure();
    return argument;
}

HotkeyPortal::~HotkeyPortal() {
    if (!m_session.isEmpty())
        QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
            portalService, m_session, sessionInterface, QStringLiteral("Close")));
}

void HotkeyPortal::bind() {
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    QDBusConnection::sessionBus().connect(anySender, portalPath, shortcutsInterface,
                                          QStringLiteral("Activated"), this,
                                          SLOT(shortcutActivated(QDBusObjectPath, QString)));
    request(QStringLiteral("CreateSession"), {}, {{QStringLiteral("session_handle_token"), freshToken()}},
            SLOT(sessionCreated(uint, QVariantMap)));
}

void HotkeyPortal::request(const QString& method, const QVariantList& arguments, QVariantMap options,
                           const char* answerSlot) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString token = freshToken();
    options.insert(QStringLiteral("handle_token"), token);
    // The answer is a signal that may overtake the reply to the call: listen before asking, at the path that
    // the portal makes of our name and the token.
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    bus.connect(anySender, portalPath + QStringLiteral("/request/%1/%2").arg(sender, token), requestInterface,
                QStringLiteral("Response"), this, answerSlot);

    QDBusMessage call = QDBusMessage::createMethodCall(portalService, portalPath, shortcutsInterface, method);
    call.setArguments(arguments + QVariantList{options});
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->isError())
            Q_EMIT refused(noPortal());
    });
}

void HotkeyPortal::sessionCreated(uint response, const QVariantMap& results) {
    m_session = results.value(QStringLiteral("session_handle")).toString();
    if (response != granted || m_session.isEmpty()) {
        Q_EMIT refused(userDeclined());
        return;
    }
    const QList<PortalShortcut> shortcuts{
        {shortcutName,
         {{QStringLiteral("description"), QStringLiteral("Harvellon Connect zeigen oder verbergen")},
          {QStringLiteral("preferred_trigger"), QStringLiteral("F19")}}}};
    const QString noParentWindow = QStringLiteral("");
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), noParentWindow},
            {}, SLOT(shortcutsBound(uint, QVariantMap)));
}

void HotkeyPortal::shortcutsBound(uint response, const QVariantMap& /*results*/) {
    if (response != granted)
        Q_EMIT refused(userDeclined());
}

void HotkeyPortal::shortcutActivated(const QDBusObjectPath& session, const QString& shortcut) {
    if (session.path() == m_session && shortcut == shortcutName)
        Q_EMIT pressed();
}
