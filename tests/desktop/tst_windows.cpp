#include "Desktop/StatusItem/PopoverPlacement.h"
#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QWidget>

using namespace Qt::StringLiterals;
using QAccessible::AlertMessage;
using QAccessible::Button;

/// The status item with its panel, the settings and the alerts, as windows of the desktop; and failures where
/// the user looks: at the account, in the error line, in the activity log.
class TestWindows : public DesktopTest {
    Q_OBJECT

  public:
    TestWindows() : DesktopTest(false) {}

  private:
    [[nodiscard]] QWindow* settings() const {
        m_desktop->settings->show(*m_desktop->state);
        return m_desktop->settings->window();
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
        using Bar = StatusBarController;
        for (const auto& [key, signal] :
             {std::pair(Qt::Key_Comma, &Bar::settingsRequested), std::pair(Qt::Key_U, &Bar::updatesRequested),
              std::pair(Qt::Key_Q, &Bar::quitRequested)}) {
            const QSignalSpy asked(m_desktop->statusBar.get(), signal);
            QTest::keyClick(window, key, Qt::ControlModifier);
            QCOMPARE(asked.size(), 1);
        }
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
    }

    void settingsOfNobody() {
        QWindow* const window = settings();
        for (const char* text : {"Einstellungen - Harvellon Connect", "Nicht angemeldet",
                                 "Melde dich an, um deine Projekte zu verwalten."})
            QVERIFY2(heard::find(window, QString::fromUtf8(text)), text);
        QVERIFY(!heard::find(window, u"Account hinzufügen"_s));
        QTRY_COMPARE(heard::focus(window), u"Mit Harvellon anmelden"_s);
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

        for (const QString& button : {u"Account entfernen"_s, u"Abbrechen"_s, u"Account entfernen"_s})
            QVERIFY(heard::press(heard::find(window, button, Button)));
        QCOMPARE(m_desktop->state->accounts().size(), 2);
        QVERIFY(heard::press(heard::find(window, u"Entfernen"_s, Button)));
        QTRY_COMPARE(m_desktop->state->accounts().size(), 1);
        QTRY_COMPARE(heard::names(window, QAccessible::ListItem), QStringList(people.at(1).name));
    }

    void switchesFollowTheState() {
        QWindow* const window = settings();
        const std::pair<const char*, const char*> switches[] = {
            {"F19 oeffnet Harvellon Connect", "globalHotkeyEnabled"},
            {"Beim Start wieder verbinden", "reconnectsAtStart"},
            {"Git an verbundene Projekte anpassen", "adaptsGit"},
            {"Ruhiger Arbeitsbereich in VS Code", "quietWorkspace"}};
        for (const auto& [name, property] : switches) {
            QAccessibleInterface* const control = heard::find(window, QString::fromLatin1(name));
            const bool before = control->state().checked;
            for (const bool on : {!before, before}) {
                QVERIFY(heard::press(control));
                QCOMPARE(bool(control->state().checked), on); // git has not answered yet
                QTRY_COMPARE(m_desktop->state->property(property).toBool(), on);
                QTest::qWait(100);
                QCOMPARE(bool(control->state().checked), on);
            }
        }

        QFile broken(m_desktop->home.filePath(u".gitconfig"_s));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("[broken") > 0);
        broken.close();
        QAccessibleInterface* const git = heard::find(window, u"Git an verbundene Projekte anpassen"_s);
        QVERIFY(heard::press(git));
        QTRY_VERIFY(!git->state().checked);
        QTRY_VERIFY(git->text(QAccessible::Description).contains(u"bad config line"_s));
        QVERIFY(broken.remove());
        QVERIFY(settings()); // opened again, it looks anew
        QTRY_VERIFY(git->text(QAccessible::Description).startsWith(u"Git liest nur"_s));
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

    void failedLoginIsShownAtTheAccount() {
        sandbox::Fault refused;
        refused.status = 500;
        m_platform->setFault(sandbox::Sandbox::Endpoint::token, refused);
        const QString failure = u"Token-Austausch fehlgeschlagen: HTTP 500"_s;
        PanelWindow* const window = m_desktop->openPanel();
        m_desktop->identity = u"erika"_s;
        QVERIFY(heard::press(window, u"Mit Harvellon anmelden"_s));
        QTRY_VERIFY(heard::find(window, failure, AlertMessage));
        const QRect line = heard::find(window, failure, AlertMessage)->rect();
        QVERIFY(line.top() > heard::find(window, u"Account"_s, QAccessible::Grouping)->rect().bottom());
        QVERIFY(line.bottom() < heard::find(window, u"Domain suchen"_s)->rect().top());
        QVERIFY(heard::find(settings(), failure, AlertMessage));

        m_platform->setFault(sandbox::Sandbox::Endpoint::token, {});
        m_desktop->signIn("erika");
        QVERIFY(!heard::find(m_desktop->openPanel(), failure));
        QVERIFY(!heard::find(settings(), failure));
    }

    void addressIsOfferedWhileTheBrowserIsAwaited() {
        m_desktop->shell.browser = {};
        m_desktop->shell.opens = false;
        PanelWindow* const window = m_desktop->openPanel();
        QVERIFY(heard::press(window, u"Mit Harvellon anmelden"_s));
        const QString copy = u"Adresse kopieren"_s;
        QTRY_VERIFY(heard::find(window, copy, Button));
        QTRY_VERIFY(heard::names(window, AlertMessage)
                        .contains(u"Der Browser konnte nicht geöffnet werden. Kopiere die Adresse und öffne "
                                  "sie in einem Browser deiner Wahl."_s));
        QVERIFY(heard::press(window, copy));
        QCOMPARE(m_desktop->copied, m_desktop->shell.opened.last());
        m_desktop->copied.clear();
        QVERIFY(heard::press(settings(), copy));
        QCOMPARE(m_desktop->copied, m_desktop->shell.opened.last());
        m_desktop->state->cancelLogin();
        QTRY_VERIFY(!m_desktop->state->isAuthenticating());
        QTRY_VERIFY(!heard::find(settings(), copy));
    }

    void longFailuresAreShownInPartAndCopiedWhole() {
        PanelWindow* const window = openSignedIn();
        const QString flood = u"Zeile\n"_s.repeated(1000) + u"Ende"_s;
        m_desktop->state->parts().report.log(flood, ActivityLogLevel::error);
        m_desktop->state->parts().report.setLastError(flood);
        QTRY_VERIFY(heard::find(window, flood, AlertMessage));
        QAccessibleInterface* const line = heard::find(window, flood, AlertMessage);
        QTRY_VERIFY(line->rect().height() > 80 && line->rect().height() < 150);
        const auto listTop = [&] {
            return heard::find(window, u"Projekte"_s, QAccessible::List)->rect().top();
        };
        QTRY_VERIFY(line->rect().bottom() < listTop());
        const QString copy = u"Meldung kopieren"_s;
        QVERIFY(heard::press(heard::find(line, copy, Button)));
        QCOMPARE(m_desktop->copied, flood);
        QVERIFY(heard::press(window, u"Meldung schließen"_s));
        QVERIFY(!m_desktop->state->lastError());
        m_desktop->copied.clear();
        QVERIFY(!heard::find(window, copy, Button)); // the log is closed
        QVERIFY(heard::press(window, u"Anzeigen"_s));
        QTRY_VERIFY(heard::press(window, copy));
        QCOMPARE(m_desktop->copied, flood);
    }

    void aProjectThatIsNotLetInOffersHelp() {
        PanelWindow* const window = openSignedIn();
        const Project project = m_desktop->state->projects().constFirst();
        await(m_desktop->state->parts().connections.connect(project)); // its server has no address here
        QTRY_VERIFY(heard::press(window, u"Hilfe zum Zugang"_s));
        QWindow* const alert = m_desktop->alerts->accessWindow();
        QVERIFY(alert && QTest::qWaitForWindowExposed(alert));
        QTRY_VERIFY(heard::find(alert, m_desktop->state->access()->title()));
        QTRY_VERIFY(heard::find(alert, u"Schlüssel anlegen"_s, Button));
        const int height = alert->height();
        QVERIFY(heard::press(heard::find(alert, u"Zugang prüfen"_s, Button)));
        QTRY_VERIFY(heard::find(alert, u"Der Name %1 lässt sich nicht auflösen."_s.arg(project.domain)));
        QTRY_VERIFY2(alert->height() > height, "the window grows with what it tells");
        QVERIFY(heard::press(heard::find(alert, u"Schließen"_s, Button)));
        QVERIFY(!m_desktop->alerts->accessWindow());
        QTest::qWait(600); // what listens whether the check is silent ends after it
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
