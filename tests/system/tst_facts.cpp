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
};

QTEST_GUILESS_MAIN(TestFacts)
#include "tst_facts.moc"
