#include "System/Native/HotkeyPortal_linux.h"

#include "System/Logging.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString registryInterface = QStringLiteral("org.freedesktop.host.portal.Registry");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");
const QString shortcutName = QStringLiteral("toggle-panel");
const QString notAllowed = QStringLiteral("org.freedesktop.portal.Error.NotAllowed");
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

HotkeyPortal::HotkeyPortal(std::chrono::milliseconds shortestSession)
    : m_shortestSession(shortestSession), m_connectionName(freshToken()),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName)),
      m_watcher(portalService, m_bus) {
    qRegisterMetaType<QDBusObjectPath>(); // connecting the signal looks its type up by name
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    m_bus.connect(anySender, portalPath, shortcutsInterface, QStringLiteral("Activated"), this,
                  SLOT(shortcutActivated(QDBusObjectPath, QString)));
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& before, const QString& owner) {
                if (!before.isEmpty())
                    followOwner({});
                followOwner(owner);
            });
}

/// The portal closes the sessions of a connection that ends.
HotkeyPortal::~HotkeyPortal() {
    QDBusConnection::disconnectFromBus(m_connectionName);
}

/// Does not call a portal that has ended: that would start it, even while the user is logging out.
void HotkeyPortal::followOwner(const QString& owner) {
    if (owner.isEmpty()) {
        m_calls.reset();
        m_session.clear();
    } else if (!m_calls) { // otherwise it has been started by the first call
        bind();
    }
}

/// An error is no obstacle: older portals know no Register, and whether a portal minds that the program is
/// unknown (because its desktop file is not installed, for one) is told by the next call.
void HotkeyPortal::bind() {
    m_calls = std::make_unique<QObject>();
    m_session.clear();
    m_sinceBound.invalidate();
    QDBusMessage message = QDBusMessage::createMethodCall(portalService, portalPath, registryInterface,
                                                          QStringLiteral("Register"));
    message << QString(applicationIdentifier) << QVariantMap();
    call(message, [this](const QDBusError& error) {
        if (error.isValid())
            qCInfo(lcDesktop) << "not registered with the portal:" << error.message();
        createSession();
    });
}

void HotkeyPortal::createSession() {
    request(QStringLiteral("CreateSession"), {}, {{QStringLiteral("session_handle_token"), freshToken()}},
            SLOT(sessionCreated(uint, QVariantMap)));
}

void HotkeyPortal::refuse(const QString& reason) {
    m_watcher.setWatchedServices({});
    Q_EMIT refused(reason);
}

void HotkeyPortal::call(const QDBusMessage& message, std::function<void(const QDBusError& error)> answered) {
    auto* const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), m_calls.get());
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answered = std::move(answered)] {
        watcher->deleteLater();
        answered(watcher->error());
    });
}

void HotkeyPortal::request(const QString& method, const QVariantList& arguments, QVariantMap options,
                           const char* answerSlot) {
    const QString token = freshToken();
    options.insert(QStringLiteral("handle_token"), token);
    // The answer is a signal that may overtake the reply to the call: listen before asking, at the path that
    // the portal makes of our name and the token.
    const QString sender = m_bus.baseService().mid(1).replace(u'.', u'_');
    m_bus.connect(anySender, portalPath + QStringLiteral("/request/%1/%2").arg(sender, token),
                  requestInterface, QStringLiteral("Response"), this, answerSlot);

    QDBusMessage message =
        QDBusMessage::createMethodCall(portalService, portalPath, shortcutsInterface, method);
    message.setArguments(arguments + QVariantList{options});
    call(message, [this](const QDBusError& error) {
        if (error.isValid())
            refuse(error.name() == notAllowed ? userDeclined() : noPortal());
    });
}

void HotkeyPortal::sessionCreated(uint response, const QVariantMap& results) {
    m_session = results.value(QStringLiteral("session_handle")).toString();
    if (response != granted || m_session.isEmpty()) {
        refuse(userDeclined());
        return;
    }
    m_bus.connect(anySender, m_session, sessionInterface, QStringLiteral("Closed"), this,
                  SLOT(sessionClosed()));
    const QList<PortalShortcut> shortcuts{
        {shortcutName,
         {{QStringLiteral("description"), QStringLiteral("Harvellon Connect zeigen oder verbergen")},
          {QStringLiteral("preferred_trigger"), QStringLiteral("F19")}}}};
    const QString noParentWindow = QStringLiteral("");
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), noParentWindow},
            {}, SLOT(shortcutsBound(uint, QVariantMap)));
}

void HotkeyPortal::shortcutsBound(uint response, const QVariantMap& results) {
    // The user may choose none, and some portals bind none for a program that they do not know.
    const QVariant bound = results.value(QStringLiteral("shortcuts"));
    const bool none = bound.isValid() && qdbus_cast<QList<PortalShortcut>>(bound).isEmpty();
    if (response == granted && !none)
        m_sinceBound.start();
    else
        refuse(userDeclined());
}

void HotkeyPortal::sessionClosed() {
    if (m_sinceBound.isValid() && m_sinceBound.hasExpired(m_shortestSession.count()))
        bind();
    else
        refuse(userDeclined());
}

void HotkeyPortal::shortcutActivated(const QDBusObjectPath& session, const QString& shortcut) {
    if (session.path() == m_session && shortcut == shortcutName)
        Q_EMIT pressed();
}
