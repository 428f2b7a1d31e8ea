#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

using namespace Qt::StringLiterals;
using QAccessible::AlertMessage;
using QAccessible::Button;

/// Failures where the user looks: at the account, in the error line, in the activity log.
class TestTold : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<DesktopFixture> m_desktop;

    [[nodiscard]] QWindow* settings() const {
        m_desktop->settings->show(*m_desktop->state);
        return m_desktop->settings->window();
    }

  private Q_SLOTS:

    void initTestCase() {
        QAccessible::setActive(true);
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, false});
    }

    void init() { m_desktop = std::make_unique<DesktopFixture>(m_platform->server()); }

    void cleanup() {
        m_platform->setFault(sandbox::Sandbox::Endpoint::token, {});
        m_desktop.reset();
    }

    void failedLoginIsShownAtTheAccount() {
        sandbox::Fault refused;
        refused.status = 500;
        m_platform->setFault(sandbox::Sandbox::Endpoint::token, refused);
        const QString failure = u"Token-Austausch fehlgeschlagen: HTTP 500"_s;
        PanelWindow* const window = m_desktop->openPanel();
        m_desktop->identity = u"erika"_s;
        QVERIFY(heard::press(heard::find(window, u"Mit Harvellon anmelden"_s, Button)));
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
        QVERIFY(heard::press(heard::find(window, u"Mit Harvellon anmelden"_s, Button)));
        const QString copy = u"Adresse kopieren"_s;
        QTRY_VERIFY(heard::find(window, copy, Button));
        QTRY_VERIFY(heard::names(window, AlertMessage)
                        .contains(u"Der Browser konnte nicht geöffnet werden. Kopiere die Adresse und öffne "
                                  "sie in einem Browser deiner Wahl."_s));
        QVERIFY(heard::press(heard::find(window, copy, Button)));
        QCOMPARE(m_desktop->copied, m_desktop->shell.opened.last());
        m_desktop->copied.clear();
        QVERIFY(heard::press(heard::find(settings(), copy, Button)));
        QCOMPARE(m_desktop->copied, m_desktop->shell.opened.last());
        m_desktop->state->cancelLogin();
        QTRY_VERIFY(!m_desktop->state->isAuthenticating());
        QTRY_VERIFY(!heard::find(settings(), copy));
    }

    void longFailuresAreShownInPartAndCopiedWhole() {
        PanelWindow* const window = m_desktop->openPanel();
        const QString flood = u"Zeile\n"_s.repeated(1000) + u"Ende"_s;
        m_desktop->state->parts().report.log(flood, ActivityLogLevel::error);
        m_desktop->state->parts().report.setLastError(flood);
        QAccessibleInterface* const line = heard::find(window, flood, AlertMessage);
        QVERIFY(line);
        QVERIFY(line->rect().height() < 150);
        const QString copy = u"Meldung kopieren"_s;
        QVERIFY(heard::press(heard::find(line, copy, Button)));
        QCOMPARE(m_desktop->copied, flood);
        m_desktop->state->dismissLastError();
        m_desktop->copied.clear();
        QVERIFY(!heard::find(window, copy, Button)); // the log is closed
        QVERIFY(heard::press(heard::find(window, u"Anzeigen"_s, Button)));
        QTRY_VERIFY(heard::find(window, copy, Button));
        QVERIFY(heard::press(heard::find(window, copy, Button)));
        QCOMPARE(m_desktop->copied, flood);
    }

    void textSetByAssistiveTechnologyFilters() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        QAccessibleInterface* const field =
            heard::find(window, u"Domain suchen"_s, QAccessible::EditableText);
        field->setText(QAccessible::Value, u"backerei"_s);
        QCOMPARE(m_desktop->state->searchText(), u"backerei"_s);
        QTRY_COMPARE(heard::names(window, QAccessible::ListItem).size(), 1);
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(field->text(QAccessible::Value), QString()); // the field still follows the search
        m_desktop->state->setSearchText(u"alpen"_s);
        QCOMPARE(field->text(QAccessible::Value), u"alpen"_s);
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestTold>(argc, argv);
}

#include "tst_told.moc"
