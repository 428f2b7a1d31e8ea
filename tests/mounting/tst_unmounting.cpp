#include "MounterFixture.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/SSHFSProcess.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestUnmounting : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void unmountCommandsGoFromGentleToForced() {
        mountFirst();
        QProcess inside;
        inside.setWorkingDirectory(mountPoint(0));
        inside.start(u"/bin/sleep"_s, {u"60"_s});
        QVERIFY(inside.waitForStarted());
        m_shell->calls.clear();
        QCOMPARE(unmountFailure(domain()), u"none"_s); // busy: only the last command succeeds
        QCOMPARE(m_shell->calls, (QStringList{u"/usr/bin/fusermount3 -u "_s + mountPoint(0),
                                              u"/usr/bin/umount "_s + mountPoint(0),
                                              u"/usr/bin/fusermount3 -u -z "_s + mountPoint(0)}));
        inside.kill();
        inside.waitForFinished();
    }

    void whatSomebodyElseHasDetachedStaysWritable() {
        mountFirst();
        QFile file(mounted(u"fremd.txt"_s));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(QProcess::execute(u"fusermount3"_s, {u"-u"_s, u"-z"_s, mountPoint(0)}), 0);
        QVERIFY(unmountFailure(domain()) != "none"_L1); // every command fails
        QCOMPARE(file.write("alles"), 5);
        file.close();
        QCOMPARE(QFile(onServer(u"fremd.txt"_s)).size(), 5);
        QTRY_VERIFY(m_mounter->keptUntilClosed().isEmpty());
    }

    void aKeptMountThatIsLostIsTold() {
        mountFirst();
        QFile file(mounted(u"offen.txt"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QStringList lost;
        m_mounter->onKeptMountLost = [&lost](const QString& domain, qint32) { lost.append(domain); };
        QCOMPARE(unmountFirst(), UnmountResult::filesOpen);
        m_mounter->keptUntilClosed().first().process->kill();
        QTRY_COMPARE(lost, QStringList{domain()});
    }

    /// As in a container: the gentle command succeeds here, and the mount lives on there.
    void aProgramThatSeesOtherMountsGoesOn() {
        MountLimits limits = MounterFixture::limits();
        limits.warmUp.readers = 0; // a listing would wait behind the data, and keep the mount busy
        m_mounter = mounter(host(), limits);
        useLine({20ms, 1'000'000});
        for (const QString& way : {u"disconnect"_s, u"sleep"_s}) {
            mountFirst();
            QProcess writer;
            writer.start(u"unshare"_s, {u"-m"_s, u"--propagation"_s, u"private"_s, u"dd"_s, u"if=/dev/zero"_s,
                                        u"of="_s + mounted(way), u"bs=64k"_s, u"count=64"_s});
            QTRY_VERIFY(QFileInfo(onServer(way)).size() > 100'000);
            if (way == "sleep"_L1)
                QCOMPARE(await(m_mounter->detachIdle()).size(), 1);
            else
                QCOMPARE(unmountFirst(), UnmountResult::writing);
            QCOMPARE(m_mounter->keptUntilClosed().size(), 1);
            QTRY_COMPARE_WITH_TIMEOUT(writer.state(), QProcess::NotRunning, 20'000);
            QCOMPARE(writer.exitCode(), 0);
            QCOMPARE(QFileInfo(onServer(way)).size(), 64 * 64 * 1024);
            QTRY_VERIFY(m_mounter->keptUntilClosed().isEmpty());
        }
    }

    void localFilesAreWithinReachAgain() {
        const QString folder = mountPoint(0);
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile(folder + u"/notizen.txt"_s).open(QIODevice::WriteOnly));
        const QFile::Permissions before = QFile::permissions(folder);
        mountFirst();
        QVERIFY(m_mounter->sessions().value(domain()).coversFiles);
        QFile file(mounted(u"offen.txt"_s));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(file.write("halb"), 4);
        QCOMPARE(unmountFirst(), UnmountResult::filesOpen);
        mountFirst(); // a second one, which nobody uses; it does not wait for the file to be closed
        QCOMPARE(unmountFirst(), UnmountResult::ended);
        QVERIFY(nobodyCanSaveInto(folder)); // an editor still works in the first mount
        QCOMPARE(file.write("ganz"), 4);
        file.close();
        QCOMPARE(QFile(onServer(u"offen.txt"_s)).size(), 8);
        QTRY_COMPARE(QFile::permissions(folder), before);

        mountFirst();
        QCOMPARE(await(m_mounter->detachIdle()).size(), 1); // slept, and given up
        QVERIFY(nobodyCanSaveInto(folder));
        QCOMPARE(unmountFirst(), UnmountResult::ended);
        QCOMPARE(QFile::permissions(folder), before);
    }

    void commandsThatCutOffWaitForWriters() {
        HostSystem host = this->host();
        host.forcedUnmountDetaches = false; // as on macOS
        m_mounter = mounter(host);
        for (const bool closed : {true, false}) {
            mountFirst();
            QFile file(mounted(u"neu.txt"_s));
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            if (closed)
                QTimer::singleShot(700, &file, [&file] { file.close(); });
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(unmountFirst(), closed ? UnmountResult::ended : UnmountResult::cutOff);
            QVERIFY2(timer.elapsed() >= (closed ? 600 : 1500), qPrintable(QString::number(timer.elapsed())));
        }
    }

    void failureOfAllUnmountCommandsIsReported() {
        HostSystem mac = HostSystem::macOS(m_home->path());
        mac.sshfsCandidates = {u"/usr/bin/sshfs"_s};
        mac.platformMountOptions.clear(); // this sshfs would refuse them
        mac.volumeNameOption = u"fsname"_s;
        m_mounter = mounter(mac);
        m_shell->answers = {{u"/usr/sbin/diskutil"_s, {1, {}, u"busy\n"_s}},
                            {u"/sbin/umount /"_s, {1, {}, {}}},
                            {u"/sbin/umount -f"_s, {1, {}, u" forced\n"_s}}};
        mountFirst();
        auto first = m_mounter->unmount(domain());
        QCOMPARE(unmountFailure(domain()), u"Unmount fehlgeschlagen: forced"_s); // the outcome of the first
        QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(first)));
        QVERIFY(m_mounter->sessions().isEmpty());
    }

    void hangingCommandDoesNotHoldUpTheEnd() {
        MountLimits limits = this->limits();
        limits.unmount.command = 300ms;
        limits.quit.command = 300ms;
        limits.killAfter = 150ms; // passes before the limit of the commands
        m_mounter = mounter(host(), limits);
        for (int i = 0; i < 2; ++i)
            QCOMPARE(mountFailure(project(i)), u"none"_s);
        m_shell->hanging = u"/usr/bin/umount"_s;
        m_shell->answers = {{u"/usr/bin/fusermount3 -u /"_s, {1, {}, {}}}};
        const auto unmounting = m_mounter->unmount(domain());
        QElapsedTimer timer;
        timer.start();
        await(m_mounter->unmountAll());
        QVERIFY2(timer.elapsed() < 2500, qPrintable(QString::number(timer.elapsed())));
        verifyNothingLeft();
    }
};

QTEST_GUILESS_MAIN(TestUnmounting)
#include "tst_unmounting.moc"
