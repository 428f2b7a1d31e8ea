#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

using namespace Qt::StringLiterals;

/// The user's own programs, as they are chosen in the settings and in the menu of a project.
class TestProgramsSection : public DesktopTest {
    Q_OBJECT

  public:
    TestProgramsSection() : DesktopTest(true) {}

  private:
    /// The path of an editor that has been installed just now.
    [[nodiscard]] QString newEditor() const {
        const QString editor = m_desktop->home.filePath(u".local/bin/phpstorm"_s);
        return QDir().mkpath(QFileInfo(editor).path()) && QFile::link(u"/bin/true"_s, editor) ? editor
                                                                                              : QString();
    }

    [[nodiscard]] QWindow* settings() const {
        m_desktop->settings->show(*m_desktop->state);
        return m_desktop->settings->window();
    }

  private Q_SLOTS:

    void programsAreChosenAmongThoseThatAreThere() {
        const QString editor = newEditor();
        QWindow* const window = settings();
        window->resize(520, 900);
        const ProgramSettings& programs = *m_desktop->state->programs();
        const auto choose = [window](const QString& name) {
            return heard::press(heard::find(window, u"Editor"_s, QAccessible::ComboBox)) &&
                   QTest::qWaitFor(
                       [&] { return heard::press(heard::find(window, name, QAccessible::ListItem)); });
        };
        QVERIFY(choose(u"PhpStorm"_s));
        QCOMPARE(programs.editor(), u"phpstorm"_s);
        QVERIFY(QFile::remove(editor));
        QVERIFY(settings()); // looks anew
        QVERIFY(choose(u"PhpStorm (nicht gefunden)"_s));
        QVERIFY(choose(u"Eigener Befehl"_s));
        const auto field = [window] { return heard::find(window, u"Editor: eigener Befehl"_s); };
        QTRY_VERIFY(field());
        field()->setText(QAccessible::Value, u"ed %f"_s);
        QTRY_COMPARE(programs.editorCommand(), u"ed %f"_s);
        QCOMPARE(programs.editor(), ProgramChoices::own());
        QCOMPARE(m_desktop->preferences->text(u"EditorCommand"_s), u"ed %f"_s);
        QVERIFY(choose(u"VS Code"_s));
        QVERIFY(!field());
    }

    void aProjectIsOpenedWithAnotherEditor() {
        const QString editor = newEditor();
        PanelWindow* const window = openSignedIn();
        const Project project = m_desktop->state->projects().constFirst();
        const auto press = [window](const QString& entry) {
            return QTest::qWaitFor(
                [&] { return heard::press(heard::find(window, entry, QAccessible::MenuItem)); });
        };
        const auto openMenu = [&] {
            m_desktop->state->setSearchText(project.domain);
            QTest::keyClick(window, Qt::Key_Menu);
            return QTest::qWaitFor([&] { return !heard::names(window, QAccessible::MenuItem).isEmpty(); });
        };
        await(m_desktop->state->parts().connections.connect(project));
        const auto openEditors = [&] { // again where the menu has not been ready
            const auto areOpen = [&] { return heard::find(window, u"VS Code"_s, QAccessible::MenuItem); };
            bool open = false;
            for (int i = 0; i < 5 && !open; ++i)
                open = openMenu() && press(u"Öffnen mit …"_s) && QTest::qWaitFor(areOpen, 1000);
            return open;
        };
        QVERIFY(openEditors() && press(u"PhpStorm"_s));
        const QString folder = m_desktop->host.mountPoint(project.domain);
        QTRY_VERIFY2(m_desktop->shell.opened.last().startsWith(editor + u' ' + folder),
                     qPrintable(m_desktop->shell.opened.last()));
        QTRY_VERIFY(heard::names(window, QAccessible::MenuItem).isEmpty());
        QVERIFY(openEditors());
        const auto isChosen = [window](const QString& name) {
            const QAccessibleInterface* const entry = heard::find(window, name, QAccessible::MenuItem);
            return entry && entry->state().checked;
        };
        QTRY_VERIFY2(isChosen(u"PhpStorm"_s) && !isChosen(u"VS Code"_s),
                     qPrintable(heard::names(window, QAccessible::MenuItem).join(u'|')));
        m_desktop->statusBar->close();
        m_desktop->openPanel();
        await(m_desktop->state->parts().connections.disconnect(project.domain, false));
        QVERIFY(openMenu());
        QVERIFY(!heard::find(window, u"Öffnen mit …"_s, QAccessible::MenuItem));
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestProgramsSection>(argc, argv);
}

#include "tst_programs_section.moc"
