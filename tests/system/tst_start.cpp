#include "System/HostSystem.h"
#include "System/Native/LoginItem.h"
#include "System/SingleInstance.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// Who starts the program, and how often.
class TestStart : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void startWithTheDesktopIsTheDesktopsOwn() {
        const QTemporaryDir home;
        HostSystem host = HostSystem::linuxDesktop(home.path());
        LoginItem item(host);
        QVERIFY(!item.isEnabled());
        QVERIFY(item.setEnabled(true) && item.isEnabled());
        QFile entry(host.autostartFile);
        QVERIFY(entry.open(QIODevice::ReadWrite));
        QVERIFY(entry.readAll().contains("\nExec=\"" + QCoreApplication::applicationFilePath().toUtf8() +
                                         "\"\n"));
        entry.write("Hidden=true\n"); // as desktops turn it off
        entry.close();
        QVERIFY(!item.isEnabled());
        QVERIFY(item.setEnabled(false));
        QVERIFY(!QFile::exists(host.autostartFile));
        host.autostartFile = u"/proc/none/entry.desktop"_s;
        QVERIFY(!LoginItem(host).setEnabled(true));
    }

    void theSecondOneAsksTheFirstToShowItself() {
        const QTemporaryDir home;
        // In the second folder no lock file can be written.
        for (const QString& folder : {home.filePath(u"private"_s), u"/dev/null"_s + home.path()}) {
            auto first = std::make_unique<SingleInstance>(folder);
            const QSignalSpy shown(first.get(), &SingleInstance::startedAgain);
            QVERIFY(first->claim());
            QVERIFY(!SingleInstance(folder).claim());
            QTRY_COMPARE(shown.size(), 1);
            first.reset();
            QVERIFY(SingleInstance(folder).claim());
        }
    }
};

QTEST_GUILESS_MAIN(TestStart)
#include "tst_start.moc"
