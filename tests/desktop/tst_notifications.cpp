#include "Desktop/SceneGraph.h"
#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QApplication>
#include <QDBusConnection>

/// A desktop's service for messages, on a connection of its own.
class MessageService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

  public:
    MessageService()
        : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("messages"))) {
        bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        isThere = bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }

    ~MessageService() override { QDBusConnection::disconnectFromBus(bus.name()); }

    Q_DISABLE_COPY_MOVE(MessageService)

    QDBusConnection bus;
    bool isThere = false;
    QStringList capabilities;
    QStringList bodies;
    QStringList actions;

  public Q_SLOTS:

    QStringList GetCapabilities() const { return capabilities; }

    uint Notify(const QString& /*program*/, uint /*replaced*/, const QString& /*icon*/,
                const QString& /*title*/, const QString& body, const QStringList& offered,
                const QVariantMap& /*hints*/, int /*time*/) {
        bodies.append(body);
        actions = offered;
        return bodies.size();
    }

  Q_SIGNALS:
    void ActionInvoked(uint id, const QString& action);
};

/// Messages on the desktop, and what a click on one does.
class TestNotifications : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void aClickOnAMessageOpensThePanelAtItsProject() {
        QAccessible::setActive(true);
        const QTemporaryDir folder;
        const sandbox::Sandbox platform(sandbox::Options{folder.path(), 0, false});
        DesktopFixture desktop(platform.server());
        MessageService service;
        QVERIFY(service.isThere);
        desktop.signIn("erika");
        const QString domain = desktop.state->projects().at(4).domain;
        desktop.statusBar->tellMountEnded(domain);
        QTRY_COMPARE(service.bodies.size(), 1);
        QCOMPARE(service.actions, (QStringList{QStringLiteral("default"), QStringLiteral("Öffnen")}));
        desktop.statusBar->tell(QStringLiteral("Titel"), QStringLiteral("1 < 2 & 3"));
        QTRY_COMPARE(service.bodies.size(), 2);
        QCOMPARE(service.bodies.constLast(), QStringLiteral("1 < 2 & 3"));
        service.capabilities = QStringList(QStringLiteral("body-markup"));
        desktop.statusBar->tell(QStringLiteral("Titel"), QStringLiteral("1 < 2 & 3"));
        QTRY_COMPARE(service.bodies.size(), 3);
        QCOMPARE(service.bodies.constLast(), QStringLiteral("1 &lt; 2 &amp; 3"));

        Q_EMIT service.ActionInvoked(77, QStringLiteral("default"));
        QTest::qWait(50);
        QVERIFY2(!desktop.statusBar->isShown(), "a message of somebody else opened the panel");
        Q_EMIT service.ActionInvoked(1, QStringLiteral("default"));
        QTRY_VERIFY(desktop.statusBar->isShown());
        const auto chosen = [&] {
            const QAccessibleInterface* row = nullptr;
            heard::visit(QAccessible::queryAccessibleInterface(&desktop.statusBar->panel()),
                         [&row](QAccessibleInterface* control) {
                             if (control->role() == QAccessible::ListItem && control->state().selected)
                                 row = control;
                         });
            return row && row->text(QAccessible::Name).endsWith(domain);
        };
        QTRY_VERIFY(chosen());
    }
};

int main(int argc, char* argv[]) {
    chooseSceneGraph();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    TestNotifications test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_notifications.moc"
