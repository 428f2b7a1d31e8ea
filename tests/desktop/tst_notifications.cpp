#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QDBusConnection>

using namespace Qt::StringLiterals;

/// A desktop's service for messages, on a connection of its own.
class MessageService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

  public:
    MessageService() : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"messages"_s)) {
        bus.registerObject(u"/org/freedesktop/Notifications"_s, this,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        isThere = bus.registerService(u"org.freedesktop.Notifications"_s);
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
        desktop.statusBar->notifyMountsEnded({domain});
        QTRY_COMPARE(service.bodies.size(), 1);
        QCOMPARE(service.actions, (QStringList{u"default"_s, u"Öffnen"_s}));
        desktop.statusBar->notify(u"Titel"_s, u"1 < 2 & 3"_s);
        QTRY_COMPARE(service.bodies.size(), 2);
        QCOMPARE(service.bodies.constLast(), u"1 < 2 & 3"_s);
        service.capabilities = QStringList(u"body-markup"_s);
        desktop.statusBar->notify(u"Titel"_s, u"1 < 2 & 3"_s);
        QTRY_COMPARE(service.bodies.size(), 3);
        QCOMPARE(service.bodies.constLast(), u"1 &lt; 2 &amp; 3"_s);

        Q_EMIT service.ActionInvoked(77, u"default"_s);
        QTest::qWait(50);
        QVERIFY2(!desktop.statusBar->isShown(), "a message of somebody else opened the panel");
        desktop.state->setSearchText(u"nichts davon"_s);
        Q_EMIT service.ActionInvoked(1, u"default"_s);
        QTRY_VERIFY(desktop.statusBar->isShown());
        PanelWindow* const panel = &desktop.statusBar->panel();
        QTRY_VERIFY(heard::chosen(panel).value(0).endsWith(domain));

        while (heard::focus(panel) != u"Beenden"_s)
            QTest::keyClick(panel, Qt::Key_Tab);
        QTest::keyClick(panel, Qt::Key_Menu);
        QVERIFY(heard::find(panel, u"Adresse kopieren"_s));
        desktop.statusBar->showProject(domain);
        QVERIFY(!heard::find(panel, u"Adresse kopieren"_s));
        QTest::keyClick(panel, Qt::Key_Return);
        QCOMPARE(desktop.state->parts().connections.connectingDomains(), QStringList(domain));
        desktop.statusBar->showProject(u"fremd.example"_s);
        QVERIFY(heard::find(panel, u"Kein Projekt passt zu „fremd.example“"_s));
    }

    void theProgramsMenuTakesNoKeyOfThePanel() {
        const QTemporaryDir folder;
        const sandbox::Sandbox platform(sandbox::Options{folder.path(), 0, false});
        DesktopFixture desktop(platform.server());
        desktop.signIn("erika");
        QVERIFY(desktop.openPanel()->isActive());
        const auto claimed = [](int key) { // asked by the menu of macOS before it takes a key
            QKeyEvent question(QEvent::ShortcutOverride, key, Qt::ControlModifier);
            question.ignore();
            QCoreApplication::sendEvent(QGuiApplication::focusObject(), &question);
            return question.isAccepted();
        };
        for (const int key : {Qt::Key_Q, Qt::Key_W, Qt::Key_Comma})
            QVERIFY(claimed(key));
        for (const int key : {Qt::Key_H, Qt::Key_M})
            QVERIFY(!claimed(key));
    }

    void whatTheSystemRefusesIsToldUntilItIsAllowed() {
        const QTemporaryDir folder;
        const sandbox::Sandbox platform(sandbox::Options{folder.path(), 0, false});
        DesktopFixture desktop(platform.server());
        Refusals& refusals = *desktop.state->refusals();
        PanelWindow* const panel = desktop.openPanel();
        const QString button = u"Systemeinstellungen öffnen"_s;
        QVERIFY(!heard::find(panel, button));
        refusals.refuse(Permission::loginItem);
        const QString text = refusals.text();
        QTRY_VERIFY(heard::find(panel, text, QAccessible::AlertMessage));
        QVERIFY(heard::press(panel, button));
        QCOMPARE(desktop.shell.opened.last(),
                 u"x-apple.systempreferences:com.apple.LoginItems-Settings.extension"_s);
        QVERIFY(heard::press(panel, u"Hinweis schließen"_s));
        QTRY_VERIFY(!heard::find(panel, text, QAccessible::AlertMessage));
        desktop.settings->show(*desktop.state);
        QWindow* const settings = desktop.settings->window();
        QTRY_VERIFY(heard::find(settings, text, QAccessible::AlertMessage));
        QVERIFY(heard::find(settings, button));
        refusals.allow(Permission::loginItem);
        QTRY_VERIFY(!heard::find(settings, button));
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestNotifications>(argc, argv);
}

#include "tst_notifications.moc"
