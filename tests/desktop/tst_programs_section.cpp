#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

using namespace Qt::StringLiterals;

/// The user's own programs, as they are chosen in the settings.
class TestProgramsSection : public DesktopTest {
    Q_OBJECT

  public:
    TestProgramsSection() : DesktopTest(false) {}

  private:
    [[nodiscard]] QWindow* settings() const {
        m_desktop->settings->show(*m_desktop->state);
        return m_desktop->settings->window();
    }

  private Q_SLOTS:

    void programsAreChosenAmongThoseThatAreThere() {
        const QString editor = m_desktop->home.filePath(u".local/bin/phpstorm"_s);
        QVERIFY(QDir().mkpath(QFileInfo(editor).path()) && QFile::link(u"/bin/true"_s, editor));
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
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestProgramsSection>(argc, argv);
}

#include "tst_programs_section.moc"
