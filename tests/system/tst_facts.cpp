#include "System/HostSystem.h"
#include "System/LoginItem.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
QString line(const ExternalCommand& command) {
    return (QStringList{command.executable} + command.argumentsFor(QStringLiteral("P")))
        .join(QLatin1Char(' '));
}
} // namespace

/// What the desktops differ in, to the letter: nobody sees the other desktop's values at work here.
class TestFacts : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void commands_data() {
        QTest::addColumn<HostSystem>("host");
        QTest::addColumn<QStringList>("unmount");
        QTest::addColumn<QStringList>("others"); // forced unmount, opener, browser query, editor
        QTest::newRow("macOS")
            << HostSystem::macOS(QStringLiteral("/Users/e b"))
            << QStringList{QStringLiteral("/usr/sbin/diskutil unmount P"), QStringLiteral("/sbin/umount P"),
                           QStringLiteral("/sbin/umount -f P")}
            << QStringList{QStringLiteral("/sbin/umount -f P"), QStringLiteral("/usr/bin/open P"),
                           QStringLiteral("/usr/bin/osascript -e tell application \"Google Chrome\" to get "
                                          "URL of active tab of front window P"),
                           QStringLiteral("/usr/bin/open -a Visual Studio Code P")};
        QTest::newRow("Linux") << HostSystem::linuxDesktop(QStringLiteral("/home/e"))
                               << QStringList{QStringLiteral("/usr/bin/fusermount3 -u P"),
                                              QStringLiteral("/usr/bin/umount P"),
                                              QStringLiteral("/usr/bin/fusermount3 -u -z P")}
                               << QStringList{QStringLiteral("/usr/bin/fusermount3 -u -z P"),
                                              QStringLiteral("/usr/bin/xdg-open P"), QStringLiteral(" P"),
                                              QStringLiteral(" P")};
    }

    void commands() {
        QFETCH(HostSystem, host);
        QFETCH(QStringList, unmount);
        QFETCH(QStringList, others);
        QStringList found;
        for (const ExternalCommand& command : host.unmountCommands)
            found.append(line(command));
        QCOMPARE(found, unmount);
        QCOMPARE((QStringList{line(host.forcedUnmount), line(host.opener), line(host.browserQuery),
                              line(host.editorOpen)}),
                 others);
    }

    void setupOnMacOS() {
        const Guidance guidance = HostSystem::macOS({}).setupGuidance;
        QCOMPARE(guidance.title, QStringLiteral("FUSE-T und sshfs werden benötigt"));
        const QString address = guidance.buttons.value(0).target;
        QCOMPARE(guidance.text,
                 QStringLiteral("Harvellon Connect mountet Projekte über sshfs (FUSE-T). Bitte einmalig "
                                "installieren:\n\n  1. FUSE-T: %1\n  2. sshfs (von macos-fuse-t): im "
                                "Homebrew-Tap oder als .pkg\n\nDanach App neu verbinden \u2014 sshfs wird "
                                "automatisch erkannt.")
                     .arg(address));
        QVERIFY(address.startsWith(QLatin1String("https:")));
        QCOMPARE(guidance.buttons.size(), 2);
        QCOMPARE(guidance.buttons.at(0).label, QStringLiteral("fuse-t.org öffnen"));
        QCOMPARE(guidance.buttons.at(1).label, QStringLiteral("Abbrechen"));
    }

    void repairOnMacOS() {
        const Guidance guidance = HostSystem::macOS({}).repairGuidance;
        const GuidanceButton copy = guidance.buttons.value(0);
        QCOMPARE(copy.target.size(), 109);
        QCOMPARE(
            guidance.text,
            QStringLiteral("sshfs wurde gefunden, startet aber nicht \u2014 das passiert wenn FUSE-T und "
                           "macFUSE nebeneinander installiert wurden (Code-Signaturen der Libraries passen "
                           "nicht zusammen).\n\nReparatur in einem Terminal-Fenster:\n\n") +
                copy.target +
                QStringLiteral("\n\nNach dem Ausführen das Terminal-Command `sshfs --version` "
                               "verifiziert's \u2014 muss sauber \u201eSSHFS version \u2026\" ausgeben. Dann "
                               "App neu verbinden."));
        QCOMPARE(copy.told, QStringLiteral("Reparatur-Befehle in die Zwischenablage kopiert. Im Terminal "
                                           "einfügen und ausführen."));
        QCOMPARE(guidance.buttons.value(1).action, GuidanceButton::Action::openTerminal);
        QVERIFY(guidance.buttons.value(1).told.isEmpty());
    }

    void startWithTheDesktopIsTheDesktopsOwn() {
        const QTemporaryDir home;
        HostSystem host = HostSystem::linuxDesktop(home.path());
        LoginItem item(host);
        QVERIFY(!item.isEnabled());
        QVERIFY(item.setEnabled(true));
        QVERIFY(item.isEnabled());
        QFile entry(host.autostartFile);
        QVERIFY(entry.open(QIODevice::ReadWrite));
        QVERIFY(entry.readAll().contains("\nExec=\"" + QCoreApplication::applicationFilePath().toUtf8() +
                                         "\"\n"));
        entry.write("Hidden=true\n"); // as desktops turn it off
        entry.close();
        QVERIFY(!item.isEnabled());
        QVERIFY(item.setEnabled(true));
        QVERIFY(item.isEnabled());
        QVERIFY(item.setEnabled(false));
        QVERIFY(!QFile::exists(host.autostartFile));
        host.autostartFile = QStringLiteral("/proc/none/entry.desktop");
        QVERIFY(!LoginItem(host).setEnabled(true));
    }

    void linuxGuidanceNamesThePackage_data() {
        QTest::addColumn<QString>("osRelease");
        QTest::addColumn<QString>("command");
        QTest::newRow("Debian") << "ID=debian\n"
                                << "sudo apt install sshfs";
        QTest::newRow("derived") << "NAME=Mint\nID=linuxmint\nID_LIKE=\"ubuntu debian\"\n"
                                 << "sudo apt install sshfs";
        QTest::newRow("Fedora") << "ID=fedora\n"
                                << "sudo dnf install fuse-sshfs";
        QTest::newRow("SUSE") << "ID=\"opensuse-leap\"\nID_LIKE=\"suse opensuse\"\n"
                              << "sudo zypper install sshfs";
        QTest::newRow("unknown") << ""
                                 << "sudo apt install sshfs";
    }

    void linuxGuidanceNamesThePackage() {
        QFETCH(QString, osRelease);
        QFETCH(QString, command);
        const Guidance guidance = HostSystem::linuxDesktop({}, osRelease).setupGuidance;
        QCOMPARE(guidance.buttons.value(0).target, command);
        QVERIFY(guidance.text.contains(command));
    }
};

QTEST_GUILESS_MAIN(TestFacts)
#include "tst_facts.moc"
