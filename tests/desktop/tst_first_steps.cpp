#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QProcess>

using namespace Qt::StringLiterals;

/// The panel of somebody who has not mounted anything yet.
class TestFirstSteps : public DesktopTest {
    Q_OBJECT

  public:
    TestFirstSteps() : DesktopTest(false) {}

  private Q_SLOTS:

    void theWayToTheFirstMountIsShown() {
        m_desktop = std::make_unique<DesktopFixture>(m_platform->server(), u"/nowhere/sshfs"_s);
        PanelWindow* const window = m_desktop->openPanel();
        for (const char* step : {"Anmelden, offen", "SSH-Schlüssel, offen", "sshfs, offen"})
            QTRY_VERIFY2(heard::find(window, QString::fromUtf8(step)), step);
        QDir(m_desktop->home.path()).mkpath(u".ssh"_s);
        QProcess::execute(u"ssh-keygen"_s, {u"-qt"_s, u"ed25519"_s, u"-N"_s, QString(), u"-f"_s,
                                            m_desktop->home.filePath(u".ssh/id_ed25519"_s)});
        m_desktop->state->setup()->look();
        QTRY_VERIFY(heard::find(window, u"SSH-Schlüssel, erledigt"_s));
        QVERIFY(heard::press(window, u"Schlüssel kopieren"_s));
        QVERIFY(m_desktop->copied.startsWith(u"ssh-ed25519 "_s));
        QVERIFY(heard::press(window, u"Anleitung"_s));
        QVERIFY(!m_desktop->state->guidance().isEmpty());
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestFirstSteps>(argc, argv);
}

#include "tst_first_steps.moc"
