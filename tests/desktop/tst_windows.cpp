#include "Desktop/StatusItem/PopoverPlacement.h"
#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QWidget>

using namespace Qt::StringLiterals;
using QAccessible::Button;

/// The status item with its panel, the settings and the alerts, as windows of the desktop.
class TestWindows : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<DesktopFixture> m_desktop;

    [[nodiscard]] QWindow* settings() const {
        m_desktop->settings->show(*m_desktop->state);
        return m_desktop->settings->window();
    }

    [[nodiscard]] int settingsWindows() const {
        const QWindowList windows = QGuiApplication::topLevelWindows();
        return static_cast<int>(std::count_if(windows.begin(), windows.end(), [](const QWindow* window) {
            return window->title() == "Einstellungen"_L1;
        }));
    }

    /// Where the status item lies in the tray; empty while it does not.
    [[nodiscard]] static QRect statusItem() {
        for (const QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->inherits("QSystemTrayIconSys") && widget->isVisible())
                return {widget->mapToGlobal(QPoint(0, 0)), widget->size()};
        }
        return {};
    }

  private Q_SLOTS:

    void initTestCase() {
        QAccessible::setActive(true);
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, false});
    }

    void init() { m_desktop = std::make_unique<DesktopFixture>(m_platform->server()); }

    void cleanup() { m_desktop.reset(); }

    void aLowScreenTakesFromTheList() {
        PanelWindow* const window = m_desktop->openPanel();
        window->fitInto(500);
        QTRY_COMPARE(window->size(), QSize(640, 500));
        for (const char* name : {"Harvellon Connect", "Projekte", "Harvellon Connect 1.0.0 (42)"}) {
            const auto fits = [window, name] {
                const QAccessibleInterface* const part = heard::find(window, QString::fromLatin1(name));
                return part && window->geometry().contains(part->rect());
            };
            QTRY_VERIFY2(fits(), name);
        }
        m_desktop->statusBar->close();
        QTRY_COMPARE(m_desktop->openPanel()->size(), QSize(640, 660));
    }

    void theFirstOpeningStandsAtItsItem() {
        if (!QSystemTrayIcon::isSystemTrayAvailable())
            QSKIP("without a bar the panel is an ordinary window");
        for (int start = 0; start < 4; ++start) {
            m_desktop.reset();
            m_desktop = std::make_unique<DesktopFixture>(m_platform->server());
            QRect item;
            QTRY_VERIFY(!(item = statusItem()).isEmpty());
            m_desktop->statusBar->panel().preRender();
            const PanelWindow* const window = m_desktop->openPanel();
            const QRect visible = window->screen()->availableGeometry();
            const QPoint wanted = besideItem(window->size(), item, visible).topLeft();
            QTRY_COMPARE(window->position(), wanted);
            QTest::qWait(100);
            QCOMPARE(window->position(), wanted);
        }
    }

    void turningElsewhereClosesThePopoverAndTheSameClickKeepsItClosed() {
        if (!QSystemTrayIcon::isSystemTrayAvailable())
            QSKIP("without a bar the panel is an ordinary window");
        m_desktop->openPanel();
        QWindow other;
        other.resize(100, 100);
        other.show();
        other.requestActivate();
        QTRY_VERIFY(!m_desktop->statusBar->isShown());
        m_desktop->statusBar->toggle();
        QVERIFY2(!m_desktop->statusBar->isShown(), "the click that closed it opened it again");
        QTest::qWait(400);
        m_desktop->statusBar->toggle();
        QVERIFY(m_desktop->statusBar->isShown());
    }

    void keysReachTheProgram() {
        PanelWindow* const window = m_desktop->openPanel();
        const QSignalSpy settingsAsked(m_desktop->statusBar.get(), &StatusBarController::settingsRequested);
        const QSignalSpy updatesAsked(m_desktop->statusBar.get(), &StatusBarController::updatesRequested);
        const QSignalSpy quitAsked(m_desktop->statusBar.get(), &StatusBarController::quitRequested);
        QTest::keyClick(window, Qt::Key_Comma, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_U, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(settingsAsked.size(), 1);
        QCOMPARE(updatesAsked.size(), 1);
        QCOMPARE(quitAsked.size(), 1);
    }

    void settingsAreOneWindow() {
        m_desktop->openPanel();
        QWindow* const window = settings();
        QVERIFY2(!m_desktop->statusBar->isShown(), "the panel closes first");
        QVERIFY(QTest::qWaitForWindowActive(window));
        QCOMPARE(window->title(), u"Einstellungen"_s);
        QCOMPARE(window->size(), QSize(520, 460));
        QCOMPARE(settings(), window);
        window->close();
        QCOMPARE(settings(), window);
        QVERIFY(window->isVisible());
        QCOMPARE(settingsWindows(), 1);
    }

    void settingsOfNobody() {
        QWindow* const window = settings();
        QVERIFY(heard::find(window, u"Einstellungen - Harvellon Connect"_s));
        QVERIFY(heard::find(window, u"Nicht angemeldet"_s));
        QVERIFY(heard::find(window, u"Melde dich an, um deine Projekte zu verwalten."_s));
        QVERIFY(!heard::find(window, u"Account hinzufügen"_s));
        QTRY_COMPARE(heard::focus(window), u"Mit Harvellon anmelden"_s);
        m_desktop->identity = u"erika"_s;
        QVERIFY(heard::press(heard::find(window, u"Mit Harvellon anmelden"_s, Button)));
        QTRY_COMPARE(m_desktop->state->accounts().size(), 1);
        QTRY_VERIFY(!m_desktop->state->isLoading());
        QTRY_VERIFY(heard::find(window, u"Account hinzufügen"_s, Button));
        QVERIFY(!heard::find(window, u"Nicht angemeldet"_s));
    }

    void ofTwoAccountsOneIsActive() {
        const QList<sandbox::Identity> people = sandbox::identities();
        m_desktop->signIn(qPrintable(people.at(0).key));
        m_desktop->signIn(qPrintable(people.at(1).key));
        QWindow* const window = settings();
        QTRY_COMPARE(heard::focus(window), people.at(0).name);
        QTRY_COMPARE(heard::names(window, QAccessible::ListItem).size(), 2);
        QCOMPARE(heard::chosen(window), QStringList(people.at(1).name));
        QVERIFY(heard::press(heard::find(window, people.at(0).name, QAccessible::ListItem)));
        QTRY_COMPARE(heard::chosen(window), QStringList(people.at(0).name));

        QVERIFY(heard::press(heard::find(window, u"Account entfernen"_s, Button)));
        QTRY_COMPARE(m_desktop->state->accounts().size(), 1);
        QTRY_COMPARE(heard::names(window, QAccessible::ListItem), QStringList(people.at(1).name));
    }

    void theSwitchTurnsTheHotKeyOff() {
        QWindow* const window = settings();
        const bool before = m_desktop->state->globalHotkeyEnabled();
        QAccessibleInterface* const control = heard::find(window, u"F19 oeffnet Harvellon Connect"_s);
        QCOMPARE(control->text(QAccessible::Description),
                 u"Systemweit aktiv, auch wenn die App im Hintergrund ist."_s);
        QVERIFY(heard::press(control));
        QCOMPARE(m_desktop->state->globalHotkeyEnabled(), !before);
        QVERIFY(heard::press(control));
        QCOMPARE(m_desktop->state->globalHotkeyEnabled(), before);
    }

    void theSwitchForGitFollowsTheConfiguration() {
        QWindow* const window = settings();
        QAccessibleInterface* const control = heard::find(window, u"Git an verbundene Projekte anpassen"_s);
        const QString file = m_desktop->home.filePath(u".gitconfig"_s);
        QVERIFY(!control->state().checked);
        QVERIFY(heard::press(control));
        QVERIFY(control->state().checked); // before git has answered, too
        QTRY_VERIFY(QFileInfo(file).size() > 0);
        QTRY_VERIFY(control->state().checked);
        QVERIFY(heard::press(control));
        QTRY_COMPARE(QFileInfo(file).size(), 0);

        QFile broken(file);
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("[broken") > 0);
        broken.close();
        QVERIFY(heard::press(control));
        QTRY_VERIFY(!control->state().checked);
        QTRY_VERIFY(control->text(QAccessible::Description).contains(u"bad config line"_s));
        QVERIFY(QFile::remove(file));
        QVERIFY(settings()); // opened again, it looks anew
        QTRY_VERIFY(control->text(QAccessible::Description).startsWith(u"Git liest nur"_s));
    }

    void theWorkspaceIsQuietWhenSwitched() {
        QAccessibleInterface* const control = heard::find(settings(), u"Ruhiger Arbeitsbereich in VS Code"_s);
        for (const bool quiet : {true, false}) {
            QVERIFY(heard::press(control));
            QCOMPARE(m_desktop->state->quietWorkspace(), quiet);
            QCOMPARE(m_desktop->preferences->boolean(u"QuietWorkspace"_s), quiet);
            QCOMPARE(bool(control->state().checked), quiet);
        }
    }

    void whatHasTheFocusIsScrolledIntoSight() {
        QWindow* const window = settings();
        QVERIFY(QTest::qWaitForWindowActive(window));
        QAccessibleInterface* const last = heard::find(window, u"Ruhiger Arbeitsbereich in VS Code"_s);
        const auto below = [&] { return last->rect().bottom() - window->geometry().bottom(); };
        QVERIFY(below() > -30);
        for (int presses = 0; presses < 12 && heard::focus(window) != last->text(QAccessible::Name);
             ++presses)
            QTest::keyClick(window, Qt::Key_Tab);
        QVERIFY(below() < -30); // with its row
        window->close();
        QVERIFY(settings());
        QTRY_VERIFY(below() > -30); // and back with the focus
    }

    void guidanceIsAskedOnceAndAnswered() {
        m_desktop.reset();
        m_desktop = std::make_unique<DesktopFixture>(m_platform->server(), u"/nowhere/sshfs"_s);
        m_desktop->signIn("erika");
        await(m_desktop->state->parts().connections.connect(m_desktop->state->projects().constFirst()));
        QWindow* const alert = m_desktop->alerts->window();
        QVERIFY(alert);
        QVERIFY(QTest::qWaitForWindowExposed(alert));
        const QVariantMap guidance = m_desktop->state->guidance();
        QVERIFY(heard::find(alert, guidance.value(u"title"_s).toString()));
        const QStringList labels = guidance.value(u"buttons"_s).toStringList();
        for (const QString& label : labels)
            QVERIFY2(heard::find(alert, label, Button), qPrintable(label));
        QVERIFY(heard::press(heard::find(alert, labels.constLast(), Button)));
        QVERIFY(m_desktop->state->guidance().isEmpty());
        QVERIFY(!m_desktop->alerts->window());
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestWindows>(argc, argv);
}

#include "tst_windows.moc"
