#include "MounterFixture.h"

#include "Mounting/MountPoint.h"
#include "Mounting/SSHFSProcess.h"

#include <QElapsedTimer>
#include <QProcess>

#include <csignal>
#include <thread>

using namespace std::chrono_literals;

class TestMounter : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void filesAreOnTheServerAndUnmountingEndsIt() {
        const MountSession session = await(m_mounter->mount(project(0)));
        QCOMPARE(session.mountPoint, mountPoint(0));
        QCOMPARE(m_mounter->mountPoint(session.domain), std::optional(session.mountPoint));
        QCOMPARE(QDir(session.mountPoint).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{QStringLiteral("log"), QStringLiteral("web")}));
        QFile file(session.mountPoint + QStringLiteral("/web/neu.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("gespeichert");
        file.close();
        QFile onServer(project(0).path + QStringLiteral("/web/neu.txt"));
        QVERIFY(onServer.open(QIODevice::ReadOnly));
        QCOMPARE(onServer.readAll(), QByteArray("gespeichert"));

        QCOMPARE(await(m_mounter->mount(project(0))).startedAt, session.startedAt); // the same session
        QCOMPARE(unmountFailure(session.domain), QStringLiteral("none"));
        QCOMPARE(unmountFailure(session.domain), QStringLiteral("none")); // no session: silent
        QVERIFY(QDir(session.mountPoint).isEmpty());
        QVERIFY(nobodyCanSaveInto(session.mountPoint));
        QFile hosts(host().knownHostsFile());
        QVERIFY(hosts.size() > 0);
        constexpr QFile::Permissions others = QFile::ReadGroup | QFile::ReadOther;
        QCOMPARE(hosts.permissions() & others, QFile::Permissions());
        QCOMPARE(QFileInfo(host().privateFolder).permissions() & others, QFile::Permissions());
    }

    void projectNameInjectsNothing() {
        const QString proof = m_home->filePath(QStringLiteral("proof"));
        const QString script = m_home->filePath(QStringLiteral("evil.sh"));
        writeScript(script, "#!/bin/sh\ntouch '" + proof.toUtf8() + "'\n");
        Project project = this->project(0);
        project.name = QStringLiteral("a\\,ssh_command=") + script + QStringLiteral(",b");
        QCOMPARE(mountFailure(project), QStringLiteral("none"));
        QVERIFY(!QFile::exists(proof));
    }

    void impossibleProjectsCreateNothing() {
        Project above = project(0);
        above.domain = QStringLiteral("../evil");
        Project torn = project(0);
        torn.path.append(QChar(QChar::Null));
        for (const Project& project : {above, torn}) {
            QVERIFY(mountFailure(project).endsWith(QStringLiteral("ist nicht zulässig.")));
            QVERIFY(QDir(m_home->path()).isEmpty());
        }
    }

    void refusalsAreToldApart() {
        Project missing = project(0);
        missing.path = QStringLiteral("/no/such/folder");
        QVERIFY(mountFailure(missing).contains(QStringLiteral("No such file or directory")));
        m_platform->ssh().acceptKey(false);
        QCOMPARE(mountFailure(project(0)),
                 MounterError(MounterError::Case::authenticationFailed, hosted(0).domain).description());
        m_platform->ssh().acceptKey(true);
        m_platform->ssh().replaceHostKey();
        QVERIFY(mountFailure(project(0)).contains(QStringLiteral("Host key verification failed")));
    }

    void missingMeansAreTold_data() {
        QTest::addColumn<QString>("sshfs");
        QTest::addColumn<QString>("privateFolder");
        QTest::addColumn<QString>("failure");
        QTest::newRow("no sshfs") << "/nowhere/sshfs"
                                  << "p" << MounterError(MounterError::Case::sshfsNotFound).description();
        QTest::newRow("silent sshfs") << "/usr/bin/true"
                                      << "p"
                                      << "Mount fehlgeschlagen: sshfs beendet ohne Mount";
        QTest::newRow("sshfs without interpreter") << "script"
                                                   << "p"
                                                   << "No such file or directory";
        QTest::newRow("no data folder")
            << "/usr/bin/sshfs"
            << ""
            << "Mount fehlgeschlagen: Application Support Verzeichnis nicht zugänglich.";
        QTest::newRow("data folder below a file") << "/usr/bin/sshfs"
                                                  << "script/p"
                                                  << "Not a directory";
    }

    void missingMeansAreTold() {
        QFETCH(QString, sshfs);
        QFETCH(QString, privateFolder);
        QFETCH(QString, failure);
        writeScript(m_home->filePath(QStringLiteral("script")), "#!/no/such/interpreter\n");
        HostSystem host = this->host();
        host.sshfsCandidates = {QDir(m_home->path()).absoluteFilePath(sshfs)};
        host.privateFolder = privateFolder.isEmpty() ? QString() : m_home->filePath(privateFolder);
        m_mounter = std::make_unique<SSHFSMounter>(host, *m_shell);
        const QString told = mountFailure(project(0));
        QVERIFY2(told.endsWith(failure), qPrintable(told));
    }

    void leftoversOfAnEarlierRunAreForcedOff_data() {
        QTest::addColumn<int>("signal");
        QTest::addColumn<bool>("homeIsLink");
        QTest::newRow("alive") << 0 << false;
        QTest::newRow("dead entry") << SIGKILL << false;
        QTest::newRow("dead entry, below a link") << SIGKILL << true;
        QTest::newRow("frozen") << SIGSTOP << false;
    }

    void leftoversOfAnEarlierRunAreForcedOff() {
        QFETCH(int, signal);
        QFETCH(bool, homeIsLink);
        HostSystem host = this->host();
        if (homeIsLink) {
            host.homeFolder = m_home->filePath(QStringLiteral("link"));
            QVERIFY(QFile::link(m_home->path(), host.homeFolder));
        }
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none"));
        const QList<pid_t> former = processesWith(QStringLiteral("ssh4711@"));
        m_mounter = std::make_unique<SSHFSMounter>(host, *m_shell); // the former one ends without a word
        QVERIFY(MountTable::lists(mountPoint(0)));
        for (const pid_t pid : former)
            ::kill(pid, signal);
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none"));
        QVERIFY(QFile::exists(mountPoint(0) + QStringLiteral("/web/index.php")));
        for (const pid_t pid : former)
            ::kill(pid, SIGKILL);
    }

    void leftoversAreSoughtBelowTheRootAlone() {
        QCOMPARE(mountedBelow(m_home->filePath(QStringLiteral("Harvellon"))), QStringList()); // not there yet
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none"));
        QCOMPARE(mountedBelow(m_home->filePath(QStringLiteral("Harvellon"))), QStringList{hosted(0).domain});
    }

    void folderWithoutItsMountTakesNothing() {
        QVERIFY(!await(m_mounter->mount(project(0))).coversFiles);
        for (const pid_t pid : processesWith(mountPoint(0)))
            ::kill(pid, SIGKILL);
        QTRY_VERIFY(!MountTable::lists(mountPoint(0)));
        QVERIFY(nobodyCanSaveInto(mountPoint(0)));

        // From an accident that an older program allowed.
        QFile::setPermissions(mountPoint(0), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile file(mountPoint(0) + QStringLiteral("/lokal.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(await(m_mounter->mount(project(0))).coversFiles);
        QVERIFY(!file.exists());
        QCOMPARE(unmountFailure(hosted(0).domain), QStringLiteral("none"));
        QVERIFY(file.exists());
        QVERIFY(nobodyCanSaveInto(mountPoint(0)));
        QFile::setPermissions(mountPoint(0), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY(file.remove());

        m_platform->ssh().acceptKey(false);
        QVERIFY(mountFailure(project(1)) != QLatin1String("none"));
        QVERIFY(nobodyCanSaveInto(mountPoint(1)));
    }

    void endFromOutsideIsToldOnce() {
        int calls = 0;
        std::optional<QCoro::Task<MountSession>> again;
        m_mounter->onUnexpectedTermination = [&](const QString& domain, qint32) {
            QCOMPARE(domain, hosted(0).domain);
            QVERIFY(m_mounter->sessions().isEmpty());
            ++calls;
            again.emplace(m_mounter->mount(project(0))); // at once, while the dead mount is being cleared
        };
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none"));
        const QList<pid_t> sshfs = processesWith(mountPoint(0));
        QCOMPARE(sshfs.size(), 1);
        ::kill(sshfs.first(), SIGKILL);
        QTRY_COMPARE(calls, 1);
        await(std::move(*again));
        QVERIFY(QFile::exists(mountPoint(0) + QStringLiteral("/web")));
        QCOMPARE(unmountFailure(hosted(0).domain), QStringLiteral("none"));
        QTest::qWait(100);
        QCOMPARE(calls, 1); // taken down on purpose
    }

    void unmountCommandsGoFromGentleToForced() {
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none"));
        QProcess inside;
        inside.setWorkingDirectory(mountPoint(0));
        inside.start(QStringLiteral("/bin/sleep"), {QStringLiteral("60")});
        QVERIFY(inside.waitForStarted());
        m_shell->calls.clear();
        QCOMPARE(unmountFailure(hosted(0).domain), QStringLiteral("none")); // busy: only the last one helps
        QCOMPARE(m_shell->calls,
                 (QStringList{QStringLiteral("/usr/bin/fusermount3 -u ") + mountPoint(0),
                              QStringLiteral("/usr/bin/umount ") + mountPoint(0),
                              QStringLiteral("/usr/bin/fusermount3 -u -z ") + mountPoint(0)}));
        inside.kill();
        inside.waitForFinished();
    }

    void filesInUseAreWrittenToTheirEnd() {
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none"));
        QFile file(mountPoint(0) + QStringLiteral("/web/upload.bin"));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray half(1024 * 1024, 'x');
        QCOMPARE(file.write(half), half.size());
        QVERIFY(await(m_mounter->unmount(hosted(0).domain)));
        QVERIFY(!MountTable::lists(mountPoint(0)));
        QCOMPARE(mountFailure(project(0)), QStringLiteral("none")); // the next mount does not wait for it
        QCOMPARE(file.write(half), half.size());
        file.close();
        QCOMPARE(file.error(), QFile::NoError);
        QCOMPARE(QFile(project(0).path + QStringLiteral("/web/upload.bin")).size(), 2 * half.size());
        QVERIFY(!await(m_mounter->unmount(hosted(0).domain)));
        QTRY_COMPARE(processesWith(m_home->path()), QList<pid_t>()); // by itself
    }

    void whatNoCommandUnmountsIsTold() {
        HostSystem mac = HostSystem::macOS(m_home->path());
        mac.sshfsCandidates = {QStringLiteral("/usr/bin/sshfs")};
        mac.platformMountOptions.clear(); // this sshfs would refuse them
        mac.volumeNameOption = QStringLiteral("fsname");
        SSHFSMounter mounter(mac, *m_shell);
        m_shell->answers = {{QStringLiteral("/usr/sbin/diskutil"), {1, {}, QStringLiteral("busy\n")}},
                            {QStringLiteral("/sbin/umount /"), {1, {}, {}}},
                            {QStringLiteral("/sbin/umount -f"), {1, {}, QStringLiteral(" forced\n")}}};
        await(mounter.mount(project(0)));
        try {
            await(mounter.unmount(hosted(0).domain));
            QFAIL("unmounted");
        } catch (const MounterError& error) {
            QCOMPARE(error.description(), QStringLiteral("Unmount fehlgeschlagen: forced"));
        }
        QVERIFY(mounter.sessions().isEmpty());
    }

    void silentServerEndsTheMountAfterFifteenSeconds() {
        m_platform->ssh().freeze();
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(mountFailure(project(0)), MounterError(MounterError::Case::mountTimeout).description());
        QVERIFY(timer.elapsed() >= 15000 && timer.elapsed() < 19000);
        verifyNothingLeft(); // with the server still silent
    }

    void callsForOneDomainDoNotCollide() {
        auto first = m_mounter->mount(project(0));
        QVERIFY(m_mounter->isMounting(hosted(0).domain));
        QVERIFY(mountFailure(project(0)).endsWith(QStringLiteral(" wird bereits verbunden.")));
        const MountSession session = await(std::move(first));
        auto unmounting = m_mounter->unmount(session.domain);
        auto second = m_mounter->unmount(session.domain);
        auto mounting = m_mounter->mount(project(0)); // waits for the end of the former mount
        await(std::move(unmounting));
        await(std::move(second));
        QVERIFY(await(std::move(mounting)).process != session.process);
        QCOMPARE(processesWith(mountPoint(0)).size(), 1);
    }

    void mountUnderWayCanBeGivenUp_data() {
        QTest::addColumn<int>("way");
        QTest::newRow("unmount") << 0;
        QTest::newRow("end of the program") << 1;
        QTest::newRow("end of the mounter") << 2;
    }

    void mountUnderWayCanBeGivenUp() {
        QFETCH(int, way);
        m_platform->ssh().freeze();
        auto mounting = m_mounter->mount(project(0));
        QTest::qWait(300);
        if (way == 0)
            QCOMPARE(unmountFailure(hosted(0).domain), QStringLiteral("none"));
        else if (way == 1)
            await(m_mounter->unmountAll());
        else
            m_mounter = std::make_unique<SSHFSMounter>(host(), *m_shell);
        QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(mounting)));
        verifyNothingLeft();
    }

    void ofManyAtOnceTheLastCanStillBeGivenUp() {
        std::vector<QCoro::Task<MountSession>> mounting;
        for (int i = 0; i < 12; ++i)
            mounting.push_back(m_mounter->mount(project(i)));
        QCOMPARE(unmountFailure(hosted(11).domain), QStringLiteral("none"));
        QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(mounting.back())));
        QVERIFY(!QFileInfo::exists(mountPoint(11))); // its turn had not come
        mounting.pop_back();
        for (auto& task : mounting)
            await(std::move(task));
        QCOMPARE(m_mounter->sessions().size(), 11);
    }

    void hangingCommandDoesNotHoldUpTheEnd() {
        for (int i = 0; i < 2; ++i)
            QCOMPARE(mountFailure(project(i)), QStringLiteral("none"));
        m_shell->hanging = QStringLiteral("/usr/bin/umount");
        m_shell->answers = {{QStringLiteral("/usr/bin/fusermount3 -u /"), {1, {}, {}}}};
        const auto unmounting = m_mounter->unmount(hosted(0).domain);
        QElapsedTimer timer;
        timer.start();
        await(m_mounter->unmountAll());
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        verifyNothingLeft();
    }

    void silentServerHoldsUpNeitherUnmountNorEnd() {
        for (int i = 0; i < 3; ++i)
            QCOMPARE(mountFailure(project(i)), QStringLiteral("none"));
        m_platform->ssh().freeze();
        // Somebody hangs in each of them.
        std::vector<std::thread> readers;
        for (int i = 0; i < 3; ++i)
            readers.emplace_back(
                [path = mountPoint(i)] { QFile::exists(path + QStringLiteral("/web/unknown")); });
        QTRY_COMPARE(blockedThreads(), 3);
        QElapsedTimer timer;
        timer.start();
        unmountFailure(hosted(0).domain);
        QVERIFY2(timer.elapsed() < 12000, qPrintable(QString::number(timer.elapsed())));
        timer.restart();
        await(m_mounter->unmountAll());
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        for (std::thread& reader : readers)
            reader.join();
        verifyNothingLeft();
    }
};

QTEST_GUILESS_MAIN(TestMounter)
#include "tst_mounter.moc"
