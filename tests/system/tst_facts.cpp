#include "System/HostSystem.h"
#include "System/Native/LoginItem.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// What a desktop has of its own.
class TestFacts : public QObject {
    Q_OBJECT

  private Q_SLOTS:

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
        host.autostartFile = u"/proc/none/entry.desktop"_s;
        QVERIFY(!LoginItem(host).setEnabled(true));
    }

    void linuxGuidanceNamesThePackage_data() {
        QTest::addColumn<QString>("osRelease");
        QTest::addColumn<QString>("command");
        QTest::newRow("Debian") << u"ID=debian\n"_s << u"sudo apt install sshfs"_s;
        QTest::newRow("derived") << u"NAME=Mint\nID=linuxmint\nID_LIKE=\"ubuntu debian\"\n"_s
                                 << u"sudo apt install sshfs"_s;
        QTest::newRow("Fedora") << u"ID=fedora\n"_s << u"sudo dnf install fuse-sshfs"_s;
        QTest::newRow("SUSE") << u"ID=\"opensuse-leap\"\nID_LIKE=\"suse opensuse\"\n"_s
                              << u"sudo zypper install sshfs"_s;
        QTest::newRow("unknown") << u""_s << u"sudo apt install sshfs"_s;
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
