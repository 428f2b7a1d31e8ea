#include "BrowserTab/AccessibleDocuments.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QMap>

#include <algorithm>

// Types and operators are global: the meta-type system looks for them there.
struct AccessibleReference {
    QString service;
    QDBusObjectPath path;
};

/// What Collection.GetMatches takes. The kinds of match are numbers of the protocol: 1 all, 2 any.
struct MatchRule {
    QList<int> states;
    int stateMatch = 1;
    QMap<QString, QString> attributes;
    int attributeMatch = 1;
    QList<int> roles;
    int roleMatch = 2;
    QStringList interfaces;
    int interfaceMatch = 1;
    bool invert = false;
};

Q_DECLARE_METATYPE(AccessibleReference)
Q_DECLARE_METATYPE(QList<AccessibleReference>)
Q_DECLARE_METATYPE(MatchRule)

static QDBusArgument& operator<<(QDBusArgument& argument, const AccessibleReference& reference) {
    argument.beginStructure();
    argument << reference.service << reference.path;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, AccessibleReference& reference) {
    argument.beginStructure();
    argument >> reference.service >> reference.path;
    argument.endStructure();
    return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const MatchRule& rule) {
    argument.beginStructure();
    argument << rule.states << rule.stateMatch << rule.attributes << rule.attributeMatch << rule.roles
             << rule.roleMatch << rule.interfaces << rule.interfaceMatch << rule.invert;
    argument.endStructure();
    return argument;
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, MatchRule&) {
    return argument; // it is only sent
}

namespace {
constexpr int documentWeb = 95;
constexpr int showing = 25;
constexpr int bits = 32;

/// A set of small numbers, as the protocol writes it.
QList<int> setOf(int number) {
    QList<int> words(4, 0);
    words[number / bits] = static_cast<int>(1U << static_cast<unsigned>(number % bits));
    return words;
}

class AccessibilityBus {
  public:
    AccessibilityBus() : m_bus(QDBusConnection::sessionBus()) {
        const QString launcher = QStringLiteral("org.a11y.Bus");
        const QDBusConnection session = QDBusConnection::sessionBus();
        // Asked first, because asking the launcher itself would start it.
        if (!session.isConnected() || !session.interface()->isServiceRegistered(launcher))
            return;
        const QString address = ask({launcher, QDBusObjectPath(QStringLiteral("/org/a11y/bus"))}, launcher,
                                    QStringLiteral("GetAddress"))
                                    .toString();
        if (address.isEmpty())
            return;
        m_bus = QDBusConnection::connectToBus(address, QStringLiteral("accessibility"));
        m_isOpen = m_bus.isConnected();
    }

    [[nodiscard]] bool isOpen() const { return m_isOpen; }

    [[nodiscard]] QList<AccessibleReference> children(const AccessibleReference& parent) const {
        return qdbus_cast<QList<AccessibleReference>>(
            ask(parent, QStringLiteral("org.a11y.atspi.Accessible"), QStringLiteral("GetChildren")));
    }

    [[nodiscard]] QString name(const AccessibleReference& object) const {
        // One property by its name: asked for all of them, some programs crash.
        return ask(object, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                   {QStringLiteral("org.a11y.atspi.Accessible"), QStringLiteral("Name")})
            .value<QDBusVariant>()
            .variant()
            .toString();
    }

    /// The pages below `window` that show, in the order of the tree: a page before the frames inside it.
    [[nodiscard]] QList<AccessibleReference> documents(const AccessibleReference& window) const {
        MatchRule rule;
        rule.states = setOf(showing);
        rule.roles = setOf(documentWeb);
        constexpr uint canonicalOrder = 1;
        constexpr int all = 0;
        return qdbus_cast<QList<AccessibleReference>>(
            ask(window, QStringLiteral("org.a11y.atspi.Collection"), QStringLiteral("GetMatches"),
                {QVariant::fromValue(rule), canonicalOrder, all, true}));
    }

    [[nodiscard]] QString address(const AccessibleReference& document) const {
        return ask(document, QStringLiteral("org.a11y.atspi.Document"), QStringLiteral("GetAttributeValue"),
                   {QStringLiteral("URI")})
            .toString();
    }

  private:
    /// The first value of the answer; an invalid one when none comes in time.
    [[nodiscard]] QVariant ask(const AccessibleReference& whom, const QString& interface, const QString& what,
                               const QVariantList& arguments = {}) const {
        constexpr qint64 patience = 300; // milliseconds for one answer
        const qint64 limit = std::min(patience, m_deadline.remainingTime());
        if (limit <= 0)
            return {};
        QDBusMessage call = QDBusMessage::createMethodCall(whom.service, whom.path.path(), interface, what);
        call.setArguments(arguments);
        call.setAutoStartService(false);
        return m_bus.call(call, QDBus::Block, static_cast<int>(limit)).arguments().value(0);
    }

    QDeadlineTimer m_deadline{1000};
    QDBusConnection m_bus;
    bool m_isOpen = false;
};

bool isBrowser(const QString& application) {
    return application.startsWith(QLatin1String("Google Chrome")) ||
           application.startsWith(QLatin1String("Chromium"));
}
} // namespace

QList<AccessibleDocument> accessibleDocuments() {
    qDBusRegisterMetaType<AccessibleReference>();
    qDBusRegisterMetaType<QList<AccessibleReference>>();
    qDBusRegisterMetaType<MatchRule>();
    const AccessibilityBus bus;
    if (!bus.isOpen())
        return {};
    QList<AccessibleDocument> found;
    const AccessibleReference registry{QStringLiteral("org.a11y.atspi.Registry"),
                                       QDBusObjectPath(QStringLiteral("/org/a11y/atspi/accessible/root"))};
    for (const AccessibleReference& application : bus.children(registry)) {
        if (!isBrowser(bus.name(application)))
            continue;
        for (const AccessibleReference& window : bus.children(application)) {
            const QList<AccessibleReference> documents = bus.documents(window);
            const QString address = documents.isEmpty() ? QString() : bus.address(documents.first());
            if (!address.isEmpty())
                found.append({bus.name(window), address});
        }
    }
    return found;
}
