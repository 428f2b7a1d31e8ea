#include "Desktop/SceneGraph.h"
#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QAccessible>
#include <QApplication>
#include <QProcess>
#include <QQuickItem>

using QAccessible::Button;
using QAccessible::ListItem;

namespace {
/// The row whose project's name begins like this.
QAccessibleInterface* rowOf(QWindow* window, const QString& title) {
    for (const QString& name : heard::names(window, ListItem)) {
        if (name.startsWith(title))
            return heard::find(window, name, ListItem);
    }
    return nullptr;
}

QStringList focusHeard;

QString chosenRow(QWindow* window) {
    QString chosen;
    heard::visit(QAccessible::queryAccessibleInterface(window), [&chosen](QAccessibleInterface* control) {
        if (control->role() == ListItem && control->state().selected)
            chosen = control->text(QAccessible::Name);
    });
    return chosen;
}

void type(QWindow* window, const char* text) {
    for (; *text; ++text)
        QTest::keyClick(window, *text);
}
} // namespace

/// The panel as it is used: found by what people hear, driven by keys and presses.
class TestPanel : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<DesktopFixture> m_desktop;

    [[nodiscard]] QString titleOf(int row) const {
        return m_desktop->state->visibleProjects()->index(row).data(ProjectListModel::titleRole).toString();
    }

    [[nodiscard]] QString domainOf(int row) const {
        return m_desktop->state->visibleProjects()->index(row).data(ProjectListModel::domainRole).toString();
    }

  private Q_SLOTS:

    void initTestCase() {
        QAccessible::setActive(true);
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
    }

    void init() { m_desktop = std::make_unique<DesktopFixture>(m_platform->server()); }

    void cleanup() { m_desktop.reset(); }

    void signsInFromThePanel() {
        PanelWindow* const window = m_desktop->openPanel();
        QVERIFY(heard::find(window, QStringLiteral("Nicht angemeldet")));
        QVERIFY(heard::names(window, ListItem).isEmpty());
        const auto focus = [window] {
            const QAccessibleInterface* const there =
                QAccessible::queryAccessibleInterface(window)->focusChild();
            return there ? there->text(QAccessible::Name) : QString();
        };
        QCOMPARE(focus(), QStringLiteral("Mit Harvellon anmelden"));
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_VERIFY(heard::find(window, QStringLiteral("Warte auf Browser-Login...")));
        QCOMPARE(focus(), QStringLiteral("Abbrechen"));
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE(focus(), QStringLiteral("Mit Harvellon anmelden"));
        m_desktop->identity = QStringLiteral("erika");
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE(focus(), QStringLiteral("Domain suchen"));
        QTRY_VERIFY(m_desktop->state->signedIn() && !m_desktop->state->isLoading());
        QAccessibleInterface* const badge = heard::find(window, m_desktop->state->userName());
        QVERIFY(badge);
        QCOMPARE(badge->text(QAccessible::Description),
                 QStringLiteral("%1 Projekte, Verbunden").arg(m_desktop->state->projectCount()));
        QVERIFY(!heard::find(window, QStringLiteral("Nicht angemeldet")));
        QTRY_VERIFY(heard::names(window, ListItem).size() >= 10);
    }

    void everyHeaderControlHasItsName() {
        PanelWindow* const window = m_desktop->openPanel();
        for (const char* name : {"Aktualisieren", "Auf Updates prüfen", "Einstellungen", "Beenden",
                                 "Domain des aktiven Chrome-Tabs verwenden", "Anzeigen", "Leeren"})
            QVERIFY2(heard::find(window, QString::fromUtf8(name), Button), name);
        QVERIFY(heard::find(window, QStringLiteral("Domain suchen"), QAccessible::EditableText));
        QVERIFY(heard::find(window, QStringLiteral("Harvellon Connect 1.0.0 (42)")));
    }

    void aRowOffersWhatItsUserMayDo_data() {
        QTest::addColumn<QByteArray>("who");
        QTest::addColumn<QStringList>("buttons");
        const QString connect = QStringLiteral("Verbinden und mounten");
        const QString ssh = QStringLiteral("SSH-Shell");
        const QString database = QStringLiteral("Datenbank in Sequel Ace oeffnen");
        const QString cache = QStringLiteral("Cache leeren");
        const QString site = QStringLiteral("Seite oeffnen (Shift: /admin)");
        for (const sandbox::Identity& person : sandbox::identities()) {
            QStringList buttons{cache, site};
            if (person.coder && person.allowDatabaseConnect)
                buttons = {connect, ssh, database, cache, site};
            else if (person.coder)
                buttons = {connect, ssh, cache, site};
            QTest::newRow(qPrintable(person.key)) << person.key.toLatin1() << buttons;
        }
    }

    void aRowOffersWhatItsUserMayDo() {
        QFETCH(QByteArray, who);
        QFETCH(QStringList, buttons);
        m_desktop->signIn(who.constData());
        PanelWindow* const window = m_desktop->openPanel();
        QAccessibleInterface* row = nullptr;
        QTRY_VERIFY((row = rowOf(window, titleOf(0))) != nullptr);
        QVERIFY(row->state().selectable);
        QCOMPARE(heard::names(row, Button), buttons);
        QCOMPARE(row->text(QAccessible::Description), QStringLiteral("Nicht verbunden"));
    }

    void typingFiltersAndEscapeGoesBack() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        const int all = m_desktop->state->visibleProjects()->count();
        type(window, qPrintable(domainOf(3)));
        QCOMPARE(m_desktop->state->searchText(), domainOf(0));
        QTRY_COMPARE(heard::names(window, ListItem).size(), 1);
        QTRY_VERIFY2(!chosenRow(window).isEmpty(), "the first hit is what Enter acts on");
        type(window, "zzz");
        QTRY_VERIFY(heard::find(
            window, QStringLiteral("Kein Projekt passt zu „%1“").arg(m_desktop->state->searchText())));
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(m_desktop->state->visibleProjects()->count(), all);
        QVERIFY(m_desktop->statusBar->isShown());
        QTest::keyClick(window, Qt::Key_Escape);
        QVERIFY(!m_desktop->statusBar->isShown());
    }

    void arrowsChooseARowAndKeysActOnIt() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Down);
        QTRY_VERIFY(chosenRow(window).startsWith(titleOf(1)));
        m_desktop->shell.opened.clear();
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
        QTRY_COMPARE(m_desktop->shell.opened, QStringList(QStringLiteral("https://") + domainOf(1)));
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(m_desktop->shell.opened.value(1),
                     QStringLiteral("https://") + domainOf(1) + QStringLiteral("/admin"));
    }

    void theChosenRowIsHeardWhileTheCursorStaysInTheSearch() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        // Nothing is told before a service for screen readers runs; asking for it starts it.
        QProcess::execute(QStringLiteral("dbus-send"),
                          QStringLiteral("--session --print-reply --dest=org.a11y.Bus /org/a11y/bus "
                                         "org.a11y.Bus.GetAddress")
                              .split(QLatin1Char(' ')));
        if (!QTest::qWaitFor(&QAccessible::isActive))
            QSKIP("no service for screen readers here");
        focusHeard.clear();
        const auto before = QAccessible::installUpdateHandler([](QAccessibleEvent* event) {
            if (event->type() == QAccessible::Focus)
                focusHeard.append(event->accessibleInterface()->text(QAccessible::Name));
        });
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_End, Qt::ControlModifier);
        QAccessible::installUpdateHandler(before);
        QCOMPARE(focusHeard.size(), 2);
        QVERIFY(focusHeard.constFirst().startsWith(titleOf(0)));
        QVERIFY(focusHeard.constLast().startsWith(titleOf(m_desktop->state->visibleProjects()->count() - 1)));
    }

    void theChosenProjectStaysChosenThroughAReload() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(window, Qt::Key_Down);
        const QString chosen = chosenRow(window);
        QVERIFY(!chosen.isEmpty());
        await(m_desktop->state->refresh());
        QTRY_COMPARE(chosenRow(window), chosen);
    }

    void tabReachesTheButtonsOfTheChosenRowOnly() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        QTest::keyClick(window, Qt::Key_Down);
        QTRY_VERIFY(!chosenRow(window).isEmpty());
        QStringList reached;
        const QString start = QStringLiteral("Domain suchen");
        for (int i = 0; i < 40 && (reached.isEmpty() || reached.constLast() != start); ++i) {
            QTest::keyClick(window, Qt::Key_Tab);
            if (const QAccessibleInterface* const focus =
                    QAccessible::queryAccessibleInterface(window)->focusChild())
                reached.append(focus->text(QAccessible::Name));
        }
        QCOMPARE(reached.count(QStringLiteral("Verbinden und mounten")), 1);
        QVERIFY(reached.contains(QStringLiteral("Anzeigen")));
        QCOMPARE(reached.constLast(), start);
    }

    void aClickWithShiftOpensTheBackEnd() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        QAccessibleInterface* site = nullptr;
        QTRY_VERIFY(
            (site = heard::find(rowOf(window, titleOf(0)), QStringLiteral("Seite oeffnen (Shift: /admin)"))));
        m_desktop->shell.opened.clear();
        const QPoint centre = window->mapFromGlobal(site->rect().center());
        QTest::mouseClick(window, Qt::LeftButton, Qt::ShiftModifier, centre);
        QTRY_COMPARE(m_desktop->shell.opened,
                     QStringList(QStringLiteral("https://") + domainOf(0) + QStringLiteral("/admin")));
    }

    void aFailureIsALineThatCanBePutAside() {
        m_desktop->signIn("erika");
        sandbox::Fault broken;
        broken.status = 500;
        m_platform->setFault(sandbox::Sandbox::Endpoint::directory, broken);
        await(m_desktop->state->refresh());
        m_platform->setFault(sandbox::Sandbox::Endpoint::directory, {});
        QVERIFY(m_desktop->state->lastError());
        PanelWindow* const window = m_desktop->openPanel();
        QVERIFY(heard::find(window, *m_desktop->state->lastError(), QAccessible::AlertMessage));
        QVERIFY(heard::press(heard::find(window, QStringLiteral("Meldung schließen"), Button)));
        QVERIFY(!m_desktop->state->lastError());
    }

    void aLongFailureLeavesTheListItsPlace() {
        const QTemporaryDir folder;
        QFile refusing(folder.filePath(QStringLiteral("sshfs")));
        QVERIFY(refusing.open(QFile::WriteOnly));
        refusing.write(
            "#!/bin/sh\n[ \"$1\" != --version ] || exec echo SSHFS version 3\nseq 30 >&2\nexit 1\n");
        refusing.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        refusing.close();
        m_desktop.reset();
        m_desktop = std::make_unique<DesktopFixture>(m_platform->server(), refusing.fileName());
        m_desktop->signIn("erika");
        await(m_desktop->state->connectProject(m_desktop->state->projects().constFirst()));
        const QString failure = m_desktop->state->lastError().value_or(QString());
        QVERIFY(failure.count(QLatin1Char('\n')) > 20);
        PanelWindow* const window = m_desktop->openPanel();
        const QAccessibleInterface* const line = heard::find(window, failure, QAccessible::AlertMessage);
        const QAccessibleInterface* const list =
            heard::find(window, QStringLiteral("Projekte"), QAccessible::List);
        QVERIFY(line && list);
        QVERIFY(line->rect().height() > 80);
        QVERIFY(line->rect().bottom() < list->rect().top());
    }

    void newestLineOfTheLogIsInView() {
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        QVERIFY(heard::press(heard::find(window, QStringLiteral("Anzeigen"), Button)));
        const auto lowest = [window] {
            QAccessibleInterface* const log =
                heard::find(window, QStringLiteral("Aktivitaet"), QAccessible::List);
            const int bottom = log ? log->rect().bottom() : 0;
            QString name;
            heard::visit(log, [&](QAccessibleInterface* line) {
                const QRect place = line->rect();
                if (line->role() == QAccessible::ListItem && place.contains(place.center().x(), bottom - 5))
                    name = line->text(QAccessible::Name);
            });
            return name;
        };
        for (int i = 0; i < 130; ++i) { // more than the log keeps
            const QString message = QStringLiteral("Zeile %1").arg(i);
            m_desktop->state->log(message, ActivityLogLevel::info);
            if (i % 10 == 9)
                QTRY_COMPARE(lowest(), message);
        }
        m_desktop->statusBar->close();
        m_desktop->state->log(QStringLiteral("Im Verborgenen"), ActivityLogLevel::info);
        m_desktop->openPanel();
        QTRY_COMPARE(lowest(), QStringLiteral("Im Verborgenen"));
    }

    void showsAProjectWhateverIsSearched() {
        m_desktop->signIn("erika");
        const QString domain = domainOf(7);
        const QString title = titleOf(7);
        m_desktop->state->setSearchText(QStringLiteral("nichts davon"));
        m_desktop->statusBar->showProject(domain);
        QTRY_VERIFY(chosenRow(&m_desktop->statusBar->panel()).startsWith(title));
    }

    void connectsOpensAndDisconnectsByKeys() {
        if (!m_platform->hasSsh())
            QSKIP("no SSH hosts here");
        m_desktop->signIn("erika");
        PanelWindow* const window = m_desktop->openPanel();
        const QString title = titleOf(0);
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(rowOf(window, title)->text(QAccessible::Description),
                                  QStringLiteral("Gemountet"), 20000);
        QVERIFY(heard::find(rowOf(window, title), QStringLiteral("Gemountet")));
        QVERIFY(heard::find(window, title + QStringLiteral(": Gemountet"), QAccessible::AlertMessage));
        const QStringList buttons = heard::names(rowOf(window, title), Button);
        QCOMPARE(buttons.mid(0, 3),
                 (QStringList{QStringLiteral("Trennen"), QStringLiteral("In VS Code oeffnen"),
                              QStringLiteral("Im Finder oeffnen")}));
        QVERIFY(!buttons.contains(QStringLiteral("Verbinden und mounten")));

        m_desktop->shell.opened.clear();
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(!m_desktop->shell.opened.filter(QStringLiteral("code ")).isEmpty(), 10000);

        QTest::keyClick(window, Qt::Key_T, Qt::ControlModifier);
        QTRY_COMPARE_WITH_TIMEOUT(rowOf(window, title)->text(QAccessible::Description),
                                  QStringLiteral("Nicht verbunden"), 20000);
        QCOMPARE(heard::names(rowOf(window, title), Button).constFirst(),
                 QStringLiteral("Verbinden und mounten"));
        QVERIFY(heard::find(window, title + QStringLiteral(": Nicht verbunden"), QAccessible::AlertMessage));
    }
};

int main(int argc, char* argv[]) {
    chooseSceneGraph();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    TestPanel test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_panel.moc"
