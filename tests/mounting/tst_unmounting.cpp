#include "MounterFixture.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/SSHFSProcess.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestUnmounting : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void unmountCommandsGoFromGentleToForced() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QProcess inside;
        inside.setWorkingDirectory(mountPoint(0));
        inside.start(u"/bin/sleep"_s, {u"60"_s});
        QVERIFY(inside.waitForStarted());
        m_shell->calls.clear();
        QCOMPARE(unmountFailure(hosted(0).domain), u"none"_s); // busy: only the last command succeeds
        QCOMPARE(m_shell->calls, (QStringList{u"/usr/bin/fusermount3 -u "_s + mountPoint(0),
                                              u"/usr/bin/umount "_s + mountPoint(0),
                                              u"/usr/bin/fusermount3 -u -z "_s + mountPoint(0)}));
        inside.kill();
        inside.waitForFinished();
    }

    void filesInUseStayWritableAfterUnmount() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/upload.bin"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray half(1024 * 1024, 'x');
        QCOMPARE(file.write(half), half.size());
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::filesOpen);
        QVERIFY(!MountTable::lists(mountPoint(0)));
        QCOMPARE(mountFailure(project(0)),
                 u"none"_s); // the next mount does not wait for the file to be closed
        QCOMPARE(file.write(half), half.size());
        file.close();
        QCOMPARE(file.error(), QFile::NoError);
        QCOMPARE(QFile(project(0).path + u"/web/upload.bin"_s).size(), 2 * half.size());
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::ended);
        QTRY_COMPARE(processesWith(m_home->path()),
                     QList<pid_t>()); // sshfs ends by itself when the file is closed
    }

    void whatSomebodyElseHasDetachedStaysWritable() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/fremd.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(QProcess::execute(u"fusermount3"_s, {u"-u"_s, u"-z"_s, mountPoint(0)}), 0);
        QVERIFY(unmountFailure(hosted(0).domain) != "none"_L1); // every command fails
        QCOMPARE(file.write("alles"), 5);
        file.close();
        QCOMPARE(QFile(project(0).path + u"/web/fremd.txt"_s).size(), 5);
        QTRY_VERIFY(m_mounter->keptUntilClosed().isEmpty());
    }

    void aProgramThatSeesOtherMountsGoesOn_data() {
        QTest::addColumn<bool>("sleep");
        QTest::newRow("disconnect") << false;
        QTest::newRow("sleep") << true;
    }

    /// As in a container: the gentle command succeeds here, and the mount lives on there.
    void aProgramThatSeesOtherMountsGoesOn() {
        QFETCH(const bool, sleep);
        useLine({20ms, 1'000'000});
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QString file = u"/web/container.bin"_s;
        QProcess writer;
        writer.start(u"unshare"_s, {u"-m"_s, u"--propagation"_s, u"private"_s, u"dd"_s, u"if=/dev/zero"_s,
                                    u"of="_s + mountPoint(0) + file, u"bs=64k"_s, u"count=64"_s});
        QTRY_VERIFY(QFileInfo(project(0).path + file).size() > 100'000);
        if (sleep)
            QCOMPARE(await(m_mounter->detachIdle()).size(), 1);
        else
            QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::writing);
        QCOMPARE(m_mounter->keptUntilClosed().size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(writer.state(), QProcess::NotRunning, 20'000);
        QCOMPARE(writer.exitCode(), 0);
        QCOMPARE(QFileInfo(project(0).path + file).size(), 64 * 64 * 1024);
        QTRY_VERIFY(m_mounter->keptUntilClosed().isEmpty());
    }

    void quittingRightAfterADisconnectSeesTheWriter() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/protokoll.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QTimer writes;
        writes.callOnTimeout([&file] { file.write(QByteArray(4096, 'x')); });
        writes.start(100);
        auto unmounting = m_mounter->unmount(hosted(0).domain);
        QTRY_VERIFY(!MountTable::lists(mountPoint(0)));
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values(), m_mounter->keptUntilClosed())),
                 QStringList{hosted(0).domain});
        await(std::move(unmounting));
        file.close();
    }

    void aSaveThatTheServerDoesNotTakeIsSeen() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/klein.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QList<MountSession> mounts = m_mounter->sessions().values();
        m_platform->ssh().freeze();
        QCOMPARE(await(writtenDomains(mounts, {})), QStringList{hosted(0).domain});
        m_platform->ssh().thaw();
    }

    void aKeptMountThatIsLostIsTold() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/offen.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QStringList lost;
        m_mounter->onKeptMountLost = [&lost](const QString& domain, qint32) { lost.append(domain); };
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::filesOpen);
        m_mounter->keptUntilClosed().first().process->kill();
        QTRY_COMPARE(lost, QStringList{hosted(0).domain});
    }

    void localFilesAreWithinReachAgain_data() {
        QTest::addColumn<QString>("end");
        for (const char* end : {"in use", "slept and given up", "lost and given up"})
            QTest::newRow(end) << QString::fromLatin1(end);
    }

    void localFilesAreWithinReachAgain() {
        QFETCH(const QString, end);
        const QString folder = mountPoint(0);
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile(folder + u"/notizen.txt"_s).open(QIODevice::WriteOnly));
        const QFile::Permissions before = QFile::permissions(folder);
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const MountSession session = m_mounter->sessions().value(hosted(0).domain);
        QVERIFY(session.coversFiles);
        QFile file(folder + u"/web/offen.txt"_s);
        if (end == "in use"_L1) {
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::filesOpen);
            QCOMPARE(mountFailure(project(0)), u"none"_s); // a second one, which nobody uses
        } else if (end == "slept and given up"_L1) {
            QCOMPARE(await(m_mounter->detachIdle()).size(), 1);
        } else {
            session.process->kill();
            QTRY_VERIFY(!m_mounter->sessions().contains(hosted(0).domain) && !MountTable::lists(folder));
        }
        QVERIFY(nobodyCanSaveInto(folder) || end == "in use"_L1);
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::ended);
        if (file.isOpen()) {
            QVERIFY(nobodyCanSaveInto(folder)); // an editor still works in the first mount
            file.close();
        }
        QTRY_COMPARE(QFile::permissions(folder), before);
    }

    void commandsThatCutOffWaitForWriters_data() {
        QTest::addColumn<int>("closesAfter");
        QTest::addColumn<int>("atLeast");
        QTest::addColumn<UnmountResult>("result");
        QTest::newRow("closed in time") << 700 << 600 << UnmountResult::ended;
        QTest::newRow("never closed") << 60'000 << 1500 << UnmountResult::cutOff;
    }

    void commandsThatCutOffWaitForWriters() {
        QFETCH(const int, closesAfter);
        QFETCH(const int, atLeast);
        QFETCH(const UnmountResult, result);
        HostSystem host = this->host();
        host.forcedUnmountDetaches = false; // as on macOS
        m_mounter = mounter(host);
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/neu.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QTimer::singleShot(closesAfter, this, [&file] { file.close(); });
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), result);
        QVERIFY2(timer.elapsed() >= atLeast, qPrintable(QString::number(timer.elapsed())));
        file.close();
    }

    void failureOfAllUnmountCommandsIsReported() {
        HostSystem mac = HostSystem::macOS(m_home->path());
        mac.sshfsCandidates = {u"/usr/bin/sshfs"_s};
        mac.platformMountOptions.clear(); // this sshfs would refuse them
        mac.volumeNameOption = u"fsname"_s;
        SSHFSMounter mounter(mac, *m_shell, limits());
        m_shell->answers = {{u"/usr/sbin/diskutil"_s, {1, {}, u"busy\n"_s}},
                            {u"/sbin/umount /"_s, {1, {}, {}}},
                            {u"/sbin/umount -f"_s, {1, {}, u" forced\n"_s}}};
        await(mounter.mount(project(0)));
        auto first = mounter.unmount(hosted(0).domain);
        auto second = mounter.unmount(hosted(0).domain); // gets the outcome of the first
        for (auto* unmounting : {&first, &second}) {
            try {
                await(std::move(*unmounting));
                QFAIL("unmounted");
            } catch (const MounterError& error) {
                QCOMPARE(error.description(), u"Unmount fehlgeschlagen: forced"_s);
            }
        }
        QVERIFY(mounter.sessions().isEmpty());
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
        const auto unmounting = m_mounter->unmount(hosted(0).domain);
        QElapsedTimer timer;
        timer.start();
        await(m_mounter->unmountAll());
        QVERIFY2(timer.elapsed() < 2500, qPrintable(QString::number(timer.elapsed())));
        verifyNothingLeft();
    }

    void silentServerHoldsUpNeitherUnmountNorEnd() {
        MountLimits limits;
        limits.unmount = {200ms, 200ms, 100ms, true, 0ms};
        limits.quit = {200ms, 200ms, 100ms, false, 0ms};
        limits.killAfter = 450ms;
        limits.warmUp.readers = 0; // they would hang too
        m_mounter = mounter(host(), limits);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(mountFailure(project(i)), u"none"_s);
        m_platform->ssh().freeze();
        // One reader hangs in each mount.
        std::vector<std::thread> readers;
        for (int i = 0; i < 3; ++i)
            readers.emplace_back([path = mountPoint(i)] { QFile::exists(path + u"/web/unknown"_s); });
        QTRY_COMPARE(blockedThreads(), 3);
        QElapsedTimer timer;
        timer.start();
        unmountFailure(hosted(0).domain);
        QVERIFY2(timer.elapsed() < 2500, qPrintable(QString::number(timer.elapsed())));
        timer.restart();
        await(m_mounter->unmountAll());
        QVERIFY2(timer.elapsed() < 1500, qPrintable(QString::number(timer.elapsed())));
        for (std::thread& reader : readers)
            reader.join();
        verifyNothingLeft();
    }
};

QTEST_GUILESS_MAIN(TestUnmounting)
#include "tst_unmounting.moc"
