#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QProcess>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
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
    return heard::chosen(window).value(0);
}

void type(QWindow* window, const char* text) {
    for (; *text; ++text)
        QTest::keyClick(window, *text);
}
} // namespace

/// The panel as it is used: found by what people hear, driven by keys and presses.
class TestPanel : public DesktopTest {
    Q_OBJECT

  public:
    TestPanel() : DesktopTest(true) {}

  private:
    [[nodiscard]] QString titleOf(int row) const {
        return m_desktop->state->visibleProjects()->index(row).data(ProjectListModel::titleRole).toString();
    }

    [[nodiscard]] QString domainOf(int row) const {
        return m_desktop->state->visibleProjects()->index(row).data(ProjectListModel::domainRole).toString();
    }

  private Q_SLOTS:

    void signsInFromThePanel() {
        PanelWindow* const window = m_desktop->openPanel();
        QVERIFY(heard::find(window, u"Nicht angemeldet"_s));
        for (const char* name : {"Aktualisieren", "Auf Updates prüfen", "Einstellungen", "Beenden",
                                 "Domain des aktiven Chrome-Tabs verwenden", "Anzeigen", "Leeren"})
            QVERIFY2(heard::find(window, QString::fromUtf8(name), Button), name);
        QVERIFY(heard::find(window, u"Domain suchen"_s, QAccessible::EditableText));
        QVERIFY(heard::find(window, u"Harvellon Connect 1.0.0 (42)"_s));
        QVERIFY(heard::names(window, ListItem).isEmpty());
        QCOMPARE(heard::focus(window), u"Mit Harvellon anmelden"_s);
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_VERIFY(heard::find(window, u"Warte auf Browser-Login..."_s));
        QCOMPARE(heard::focus(window), u"Abbrechen"_s);
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE(heard::focus(window), u"Mit Harvellon anmelden"_s);
        m_desktop->identity = u"erika"_s;
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE(heard::focus(window), u"Domain suchen"_s);
        QTRY_VERIFY(m_desktop->state->signedIn() && !m_desktop->state->isLoading());
        QAccessibleInterface* const badge = heard::find(window, m_desktop->state->userName());
        QVERIFY(badge);
        QCOMPARE(badge->text(QAccessible::Description),
                 u"%1 Projekte, Verbunden"_s.arg(m_desktop->state->projectCount()));
        QVERIFY(!heard::find(window, u"Nicht angemeldet"_s));
        QTRY_VERIFY(heard::names(window, ListItem).size() >= 10);
    }

    void aRowOffersWhatItsUserMayDo() {
        for (const sandbox::Identity& person : sandbox::identities()) {
            QStringList buttons{u"Cache leeren"_s, u"Seite oeffnen (Shift: /admin)"_s};
            if (person.coder && person.allowDatabaseConnect)
                buttons.prepend(u"Datenbank in Sequel Ace oeffnen"_s);
            if (person.coder)
                buttons = QStringList{u"Verbinden und mounten"_s, u"SSH-Shell"_s} + buttons;
            PanelWindow* const window = openSignedIn(qPrintable(person.key));
            QAccessibleInterface* row = nullptr;
            QTRY_VERIFY((row = rowOf(window, titleOf(0))) != nullptr);
            QVERIFY(row->state().selectable);
            QCOMPARE(heard::names(row, Button), buttons);
            QCOMPARE(row->text(QAccessible::Description), u"Nicht verbunden"_s);
        }
    }

    void typingFiltersAndEscapeGoesBack() {
        PanelWindow* const window = openSignedIn();
        const int all = m_desktop->state->visibleProjects()->count();
        type(window, qPrintable(domainOf(3)));
        QCOMPARE(m_desktop->state->searchText(), domainOf(0));
        QTRY_COMPARE(heard::names(window, ListItem).size(), 1);
        QTRY_VERIFY2(!chosenRow(window).isEmpty(), "the first hit is what Enter acts on");
        type(window, "zzz");
        QTRY_VERIFY(heard::find(window, u"Kein Projekt passt zu „%1“"_s.arg(m_desktop->state->searchText())));
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(m_desktop->state->visibleProjects()->count(), all);
        QVERIFY(m_desktop->statusBar->isShown());
        QAccessibleInterface* const field =
            heard::find(window, u"Domain suchen"_s, QAccessible::EditableText);
        field->setText(QAccessible::Value, u"backerei"_s); // as assistive technology does
        QCOMPARE(m_desktop->state->searchText(), u"backerei"_s);
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(field->text(QAccessible::Value), QString()); // the field still follows the search
        m_desktop->state->setSearchText(u"alpen"_s);
        QCOMPARE(field->text(QAccessible::Value), u"alpen"_s);
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(window, Qt::Key_Escape);
        QVERIFY(!m_desktop->statusBar->isShown());
    }

    void arrowsChooseARowAndKeysActOnIt() {
        PanelWindow* const window = openSignedIn();
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Down);
        QTRY_VERIFY(chosenRow(window).startsWith(titleOf(1)));
        const QString chosen = chosenRow(window);
        await(m_desktop->state->parts().loading.refresh());
        QTRY_COMPARE(chosenRow(window), chosen);
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier | Qt::ShiftModifier);
        const QString site = u"https://"_s + domainOf(1);
        QTRY_COMPARE(m_desktop->shell.opened, (QStringList{site, site + u"/admin"_s}));
        QAccessibleInterface* const button =
            heard::find(rowOf(window, titleOf(1)), u"Seite oeffnen (Shift: /admin)"_s);
        const QPoint centre = window->mapFromGlobal(button->rect().center());
        QTest::mouseClick(window, Qt::LeftButton, Qt::ShiftModifier, centre);
        QTRY_COMPARE(m_desktop->shell.opened.value(2), site + u"/admin"_s);
        QStringList reached; // by Tab: the buttons of the chosen row only
        const QString start = u"Domain suchen"_s;
        for (int i = 0; i < 40 && (reached.isEmpty() || reached.constLast() != start); ++i) {
            QTest::keyClick(window, Qt::Key_Tab);
            reached.append(heard::focus(window));
        }
        QCOMPARE(reached.count(u"Verbinden und mounten"_s), 1);
        QVERIFY(reached.contains(u"Anzeigen"_s));
        QCOMPARE(reached.constLast(), start);
    }

    void theChosenRowIsHeardWhileTheCursorStaysInTheSearch() {
        PanelWindow* const window = openSignedIn();
        // Qt sends no events before the accessibility bus runs; asking for its address starts it.
        QProcess::execute(u"dbus-send"_s, u"--session --print-reply --dest=org.a11y.Bus /org/a11y/bus "
                                          "org.a11y.Bus.GetAddress"_s.split(u' '));
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

    void newestLineOfTheLogIsInView() {
        PanelWindow* const window = openSignedIn();
        QVERIFY(heard::press(window, u"Anzeigen"_s));
        const auto lowest = [window] {
            QAccessibleInterface* const log = heard::find(window, u"Aktivitaet"_s, QAccessible::List);
            const int bottom = log ? log->rect().bottom() : 0;
            QString name;
            heard::visit(log, [&](QAccessibleInterface* line) {
                const QRect place = line->rect();
                if (line->role() == QAccessible::ListItem && place.contains(place.center().x(), bottom - 5))
                    name = line->text(QAccessible::Name);
            });
            return name;
        };
        for (int i = 0; i < 130; ++i) // more than the log keeps
            m_desktop->state->parts().report.log(u"Zeile %1"_s.arg(i), ActivityLogLevel::info);
        QTRY_COMPARE(lowest(), u"Zeile 129"_s);
        m_desktop->statusBar->close();
        m_desktop->state->parts().report.log(u"Im Verborgenen"_s, ActivityLogLevel::info);
        m_desktop->openPanel();
        QTRY_COMPARE(lowest(), u"Im Verborgenen"_s);
    }

    void connectsOpensAndDisconnectsByKeys() {
        PanelWindow* const window = openSignedIn();
        const QString title = titleOf(0);
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(rowOf(window, title)->text(QAccessible::Description), u"Gemountet"_s,
                                  20000);
        QAccessibleInterface* const end = heard::find(rowOf(window, title), u"Trennen"_s);
        QTest::mouseClick(window, Qt::LeftButton, {}, window->mapFromGlobal(end->rect().center()));
        QTest::qWait(700); // the click was meant for the button that stood there before
        QVERIFY(heard::find(rowOf(window, title), u"Gemountet"_s));
        QVERIFY(heard::find(window, title + u": Gemountet"_s, QAccessible::AlertMessage));
        const QStringList buttons = heard::names(rowOf(window, title), Button);
        QCOMPARE(buttons.mid(0, 3),
                 (QStringList{u"Trennen"_s, u"In VS Code oeffnen"_s, u"Im Finder oeffnen"_s}));
        QVERIFY(!buttons.contains(u"Verbinden und mounten"_s));

        m_desktop->shell.opened.clear();
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(!m_desktop->shell.opened.filter(u"code "_s).isEmpty(), 10000);

        QTest::keyClick(window, Qt::Key_T, Qt::ControlModifier);
        QTRY_COMPARE_WITH_TIMEOUT(rowOf(window, title)->text(QAccessible::Description), u"Nicht verbunden"_s,
                                  20000);
        QCOMPARE(heard::names(rowOf(window, title), Button).constFirst(), u"Verbinden und mounten"_s);
        QVERIFY(heard::find(window, title + u": Nicht verbunden"_s, QAccessible::AlertMessage));
    }

    void pinnedProjectsStandAboveAndOpenByNumber() {
        PanelWindow* const window = openSignedIn();
        const QString title = titleOf(3);
        const auto stateOf = [window](const QString& project) {
            QAccessibleInterface* const row = rowOf(window, project);
            return row ? row->text(QAccessible::Description) : QString();
        };
        m_desktop->state->setSearchText(domainOf(3));
        QTest::keyClick(window, Qt::Key_P, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_Escape);
        QCOMPARE(titleOf(0), title);
        QTRY_COMPARE(stateOf(title), u"Nicht verbunden, angeheftet, Strg+1"_s);
        QTest::keyClick(window, Qt::Key_1, Qt::ControlModifier);
        QTRY_COMPARE_WITH_TIMEOUT(stateOf(title), u"Gemountet, angeheftet, Strg+1"_s, 20000);
        m_desktop->shell.opened.clear();
        QTest::keyClick(window, Qt::Key_1, Qt::ControlModifier);
        QTRY_VERIFY_WITH_TIMEOUT(!m_desktop->shell.opened.filter(u"code "_s).isEmpty(), 10000);
        const QString pin = u"Oben anheften"_s;
        const QString next = titleOf(1);
        QVERIFY(!heard::find(window, pin));
        QTest::mouseMove(window, window->mapFromGlobal(rowOf(window, next)->rect().center()));
        QTRY_VERIFY(heard::find(rowOf(window, next), pin));
        QTest::mouseMove(window, window->mapFromGlobal(heard::find(window, pin)->rect().center()));
        QVERIFY(heard::press(heard::find(rowOf(window, next), pin)));
        QTRY_COMPARE(stateOf(next), u"Nicht verbunden, angeheftet, Strg+2"_s);
    }

    void theMenuOfARowCopiesAndThePanelStays() {
        PanelWindow* const window = openSignedIn();
        const auto entries = [window] { return heard::names(window, QAccessible::MenuItem); };
        const QStringList all{u"Adresse kopieren"_s, u"ssh-Befehl kopieren"_s, u"Oben anheften"_s};
        const QPoint row = window->mapFromGlobal(rowOf(window, titleOf(1))->rect().center());
        QTest::mouseClick(window, Qt::RightButton, {}, row);
        QTRY_COMPARE(entries(), all);
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(m_desktop->copied, u"https://"_s + domainOf(1));
        QTRY_VERIFY(entries().isEmpty());
        QCOMPARE(heard::focus(window), u"Domain suchen"_s);

        QTest::keyClick(window, Qt::Key_End, Qt::ControlModifier);
        QTest::keyClick(window, Qt::Key_F10, Qt::ShiftModifier);
        QTRY_COMPARE(entries(), all);
        for (const QString& entry : all)
            QVERIFY(window->geometry().contains(heard::find(window, entry)->rect()));
        QTest::keyClick(window, Qt::Key_Down);
        QTest::keyClick(window, Qt::Key_Return);
        QVERIFY(m_desktop->copied.startsWith(m_desktop->host.ssh + u" ssh"_s));
        QVERIFY(m_desktop->copied.endsWith(u'@' + domainOf(11)) && m_desktop->statusBar->isShown());
        QTest::keyClick(window, Qt::Key_Menu);
        QTRY_COMPARE(entries(), all);
        m_desktop->statusBar->close();
        m_desktop->openPanel();
        QVERIFY(entries().isEmpty());
    }

    void linesOfTheLogAreSelectedReadAndCopied() {
        PanelWindow* const window = openSignedIn();
        QVERIFY(heard::press(window, u"Anzeigen"_s));
        m_desktop->state->parts().report.log(u"Zeile eins\nund\nmehr"_s, ActivityLogLevel::info);
        m_desktop->state->parts().report.log(u"Zeile zwei"_s, ActivityLogLevel::info);
        const auto place = [window](const char* line) {
            QAccessibleInterface* const found = heard::find(window, QString::fromUtf8(line), ListItem);
            return found ? found->rect() : QRect();
        };
        QAccessibleInterface* const card = heard::find(window, u"Aktivitaet"_s, QAccessible::Grouping);
        QTRY_VERIFY(card->rect().height() == 160 && card->rect().contains(place("Zeile zwei"))); // it slides
        QTest::mouseClick(window, Qt::LeftButton, {}, window->mapFromGlobal(place("Zeile zwei").center()));
        QTest::keyClick(window, Qt::Key_Up);
        QTRY_VERIFY(place("Zeile eins\nund\nmehr").height() >= 2 * 22);
        QTest::keyClick(window, Qt::Key_Down, Qt::ShiftModifier);
        QTest::mouseClick(window, Qt::RightButton, {}, window->mapFromGlobal(place("Zeile zwei").center()));
        QTRY_COMPARE(heard::names(window, QAccessible::MenuItem).value(0), u"Kopieren"_s);
        QTest::keyClick(window, Qt::Key_Return);
        const QRegularExpression lines(uR"(^[\d:]{8} Zeile eins\nund\nmehr\n[\d:]{8} Zeile zwei$)"_s);
        QVERIFY2(lines.match(m_desktop->copied).hasMatch(), qPrintable(m_desktop->copied));
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestPanel>(argc, argv);
}

#include "tst_panel.moc"
