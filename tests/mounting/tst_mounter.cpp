#include "MounterFixture.h"

#include "Mounting/SSHFSProcess.h"

#include <QElapsedTimer>
#include <QProcess>

#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestMounter : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void filesAreOnTheServerAndUnmountingEndsIt() {
        const MountSession session = await(m_mounter->mount(project(0)));
        QCOMPARE(session.mountPoint, mountPoint(0));
        QCOMPARE(m_mounter->mountPoint(session.domain), std::optional(session.mountPoint));
        QCOMPARE(QDir(session.mountPoint).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{u"log"_s, u"web"_s}));
        QFile file(session.mountPoint + u"/web/neu.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("gespeichert");
        file.close();
        QFile onServer(project(0).path + u"/web/neu.txt"_s);
        QVERIFY(onServer.open(QIODevice::ReadOnly));
        QCOMPARE(onServer.readAll(), QByteArray("gespeichert"));

        QCOMPARE(await(m_mounter->mount(project(0))).startedAt, session.startedAt); // the same session
        QCOMPARE(unmountFailure(session.domain), u"none"_s);
        QCOMPARE(unmountFailure(session.domain), u"none"_s); // no session: no error
        QVERIFY(QDir(session.mountPoint).isEmpty());
        QVERIFY(nobodyCanSaveInto(session.mountPoint));
        QFile hosts(host().knownHostsFile());
        QVERIFY(hosts.size() > 0);
        constexpr QFile::Permissions others = QFile::ReadGroup | QFile::ReadOther;
        QCOMPARE(hosts.permissions() & others, QFile::Permissions());
        QCOMPARE(QFileInfo(host().privateFolder).permissions() & others, QFile::Permissions());
    }

    void projectNameInjectsNothing() {
        const QString proof = m_home->filePath(u"proof"_s);
        const QString script = m_home->filePath(u"evil.sh"_s);
        writeScript(script, "#!/bin/sh\ntouch '" + proof.toUtf8() + "'\n");
        Project project = this->project(0);
        project.name = u"a\\,ssh_command="_s + script + u",b"_s;
        QCOMPARE(mountFailure(project), u"none"_s);
        QVERIFY(!QFile::exists(proof));
    }

    void refusedProjectsCreateNothing() {
        Project above = project(0);
        above.domain = u"../evil"_s;
        Project torn = project(0);
        torn.path.append(QChar(QChar::Null));
        for (const Project& project : {above, torn}) {
            QVERIFY(mountFailure(project).endsWith(u"ist nicht zulässig."_s));
            QVERIFY(QDir(m_home->path()).isEmpty());
        }
    }

    void eachRefusalHasItsOwnMessage() {
        Project missing = project(0);
        missing.path = u"/no/such/folder"_s;
        QVERIFY(mountFailure(missing).contains(u"No such file or directory"_s));
        m_platform->ssh().acceptKey(false);
        QCOMPARE(mountFailure(project(0)),
                 MounterError(MounterError::Case::authenticationFailed, hosted(0).domain).description());
        m_platform->ssh().acceptKey(true);
        m_platform->ssh().replaceHostKey();
        QVERIFY(mountFailure(project(0)).contains(u"Host key verification failed"_s));
    }

    void missingProgramsAndFoldersAreReported_data() {
        QTest::addColumn<QString>("sshfs");
        QTest::addColumn<QString>("privateFolder");
        QTest::addColumn<QString>("failure");
        QTest::newRow("no sshfs") << u"/nowhere/sshfs"_s << u"p"_s
                                  << MounterError(MounterError::Case::sshfsNotFound).description();
        QTest::newRow("silent sshfs")
            << u"/usr/bin/true"_s << u"p"_s << u"Mount fehlgeschlagen: sshfs beendet ohne Mount"_s;
        QTest::newRow("sshfs without interpreter") << u"script"_s << u"p"_s << u"No such file or directory"_s;
        QTest::newRow("no data folder")
            << u"/usr/bin/sshfs"_s << u""_s
            << u"Mount fehlgeschlagen: Application Support Verzeichnis nicht zugänglich."_s;
        QTest::newRow("data folder below a file")
            << u"/usr/bin/sshfs"_s << u"script/p"_s << u"%: Not a directory"_s;
    }

    void missingProgramsAndFoldersAreReported() {
        QFETCH(QString, sshfs);
        QFETCH(QString, privateFolder);
        QFETCH(QString, failure);
        writeScript(m_home->filePath(u"script"_s), "#!/no/such/interpreter\n");
        HostSystem host = this->host();
        host.sshfsCandidates = {QDir(m_home->path()).absoluteFilePath(sshfs)};
        host.privateFolder = privateFolder.isEmpty() ? QString() : m_home->filePath(privateFolder);
        m_mounter = mounter(host);
        const QString description = mountFailure(project(0));
        const QString wrapped = u"Mount fehlgeschlagen: "_s;
        QVERIFY2(description.endsWith(QString(failure).replace(u'%', host.privateFolder)),
                 qPrintable(description));
        QCOMPARE(description.startsWith(wrapped), failure.startsWith(wrapped));
    }

    void anOccupiedMountPointIsForcedOffOnce() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        m_mounter = mounter(host()); // the destructor leaves the mount in place
        const QString forced = host().forcedUnmount.executable + u' ' +
                               host().forcedUnmount.argumentsFor(mountPoint(0)).join(u' ');
        m_shell->answers.insert(forced, ShellResult{});
        m_shell->calls.clear();
        QCOMPARE(mountFailure(project(0)),
                 MounterError(MounterError::Case::mountPointOccupied, mountPoint(0)).description());
        QCOMPARE(m_shell->calls, QStringList(forced));
        m_shell->answers.clear();
        QCOMPARE(mountFailure(project(0)), u"none"_s);
    }

    void mountsOfAnEarlierRunAreForcedOff_data() {
        QTest::addColumn<int>("signal");
        QTest::addColumn<bool>("homeIsLink");
        QTest::newRow("alive") << 0 << false;
        QTest::newRow("dead entry") << SIGKILL << false;
        QTest::newRow("dead entry, below a link") << SIGKILL << true;
        QTest::newRow("frozen") << SIGSTOP << false;
    }

    void mountsOfAnEarlierRunAreForcedOff() {
        QFETCH(int, signal);
        QFETCH(bool, homeIsLink);
        HostSystem host = this->host();
        if (homeIsLink) {
            host.homeFolder = m_home->filePath(u"link"_s);
            QVERIFY(QFile::link(m_home->path(), host.homeFolder));
        }
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QList<pid_t> former = processesWith(u"ssh4711@"_s);
        m_mounter = mounter(host); // the destructor leaves the mount in place
        QVERIFY(MountTable::lists(mountPoint(0)));
        for (const pid_t pid : former)
            ::kill(pid, signal);
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QVERIFY(QFile::exists(mountPoint(0) + u"/web/index.php"_s));
        for (const pid_t pid : former)
            ::kill(pid, SIGKILL);
    }

    void mountsBelowTheRootAreListed() {
        const QString root = m_home->filePath(u"Harvellon"_s);
        QVERIFY(MountTable::mountedBelow(root).isEmpty()); // not there yet
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QList<MountTable::Entry> mounts = MountTable::mountedBelow(root);
        QCOMPARE(mounts.size(), 1);
        QCOMPARE(mounts.first().path, hosted(0).domain);
        QCOMPARE(mounts.first().source, u"HV "_s + project(0).title());
        QCOMPARE(mounts.first().type, u"fuse.sshfs"_s);
    }

    void nobodyCanSaveIntoTheFolderWithoutItsMount() {
        QVERIFY(!await(m_mounter->mount(project(0))).coversFiles);
        for (const pid_t pid : processesWith(mountPoint(0)))
            ::kill(pid, SIGKILL);
        QTRY_VERIFY(!MountTable::lists(mountPoint(0)));
        QVERIFY(nobodyCanSaveInto(mountPoint(0)));

        // A local file, saved while an earlier version left the folder writable.
        QFile::setPermissions(mountPoint(0), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile file(mountPoint(0) + u"/lokal.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QFile::Permissions former = QFile::permissions(mountPoint(0));
        QVERIFY(await(m_mounter->mount(project(0))).coversFiles);
        QVERIFY(!file.exists());
        for (const pid_t pid : processesWith(mountPoint(0)))
            ::kill(pid, SIGKILL);
        QTRY_VERIFY(!MountTable::lists(mountPoint(0)));
        m_platform->ssh().acceptKey(false);
        QVERIFY(mountFailure(project(0)) != "none"_L1);
        QVERIFY(nobodyCanSaveInto(mountPoint(0))); // an editor may have the tree open still
        m_platform->ssh().acceptKey(true);
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QCOMPARE(unmountFailure(hosted(0).domain), u"none"_s);
        QCOMPARE(QFile::permissions(mountPoint(0)), former); // else the user could not move the file
        QVERIFY(file.exists());
        m_platform->ssh().acceptKey(false);
        QVERIFY(mountFailure(project(0)) != "none"_L1);
        QCOMPARE(QFile::permissions(mountPoint(0)), former);
        QVERIFY(file.remove());

        QVERIFY(mountFailure(project(1)) != "none"_L1);
        QVERIFY(nobodyCanSaveInto(mountPoint(1)));
    }

    void unexpectedEndIsReportedOnce() {
        int calls = 0;
        std::optional<QCoro::Task<MountSession>> again;
        m_mounter->onUnexpectedTermination = [&](const QString& domain, qint32) {
            QCOMPARE(domain, hosted(0).domain);
            QVERIFY(m_mounter->sessions().isEmpty());
            ++calls;
            again.emplace(m_mounter->mount(project(0))); // at once, while the dead mount is being cleared
        };
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QList<pid_t> sshfs = processesWith(mountPoint(0));
        QCOMPARE(sshfs.size(), 1);
        ::kill(sshfs.first(), SIGKILL);
        QTRY_COMPARE(calls, 1);
        await(std::move(*again));
        QVERIFY(QFile::exists(mountPoint(0) + u"/web"_s));
        QCOMPARE(unmountFailure(hosted(0).domain), u"none"_s);
        QTest::qWait(100);
        QCOMPARE(calls, 1); // an expected end is not reported
    }

    void silentServerEndsTheMountAfterTheLimit() {
        QCOMPARE(MountLimits().mount, 15s);
        MountLimits limits = this->limits();
        limits.mount = 300ms;
        m_mounter = mounter(host(), limits);
        m_platform->ssh().freeze();
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(mountFailure(project(0)), MounterError(MounterError::Case::mountTimeout).description());
        QVERIFY2(timer.elapsed() >= 300 && timer.elapsed() < 4000,
                 qPrintable(QString::number(timer.elapsed())));
        verifyNothingLeft(); // with the server still silent
    }

    void callsForOneDomainDoNotCollide() {
        auto first = m_mounter->mount(project(0));
        QVERIFY(mountFailure(project(0)).endsWith(u" wird bereits verbunden."_s));
        const MountSession session = await(std::move(first));
        auto unmounting = m_mounter->unmount(session.domain);
        auto second = m_mounter->unmount(session.domain);
        auto mounting = m_mounter->mount(project(0)); // waits for the unmount
        await(std::move(unmounting));
        await(std::move(second));
        QVERIFY(await(std::move(mounting)).process != session.process);
        QCOMPARE(processesWith(mountPoint(0)).size(), 1);
    }

    void mountUnderWayCanBeCancelled_data() {
        QTest::addColumn<int>("way");
        QTest::newRow("unmount") << 0;
        QTest::newRow("end of the program") << 1;
        QTest::newRow("end of the mounter") << 2;
    }

    void mountUnderWayCanBeCancelled() {
        QFETCH(int, way);
        m_platform->ssh().freeze();
        auto mounting = m_mounter->mount(project(0));
        QTRY_COMPARE(blockedThreads(), 1); // the check of the mount waits for the server
        if (way == 0)
            QCOMPARE(unmountFailure(hosted(0).domain), u"none"_s);
        else if (way == 1)
            await(m_mounter->unmountAll());
        else
            m_mounter = mounter(host());
        QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(mounting)));
        verifyNothingLeft();
    }

    void ofManyAtOnceTheLastCanStillBeCancelled() {
        std::vector<QCoro::Task<MountSession>> mounting;
        for (int i = 0; i < 12; ++i)
            mounting.push_back(m_mounter->mount(project(i)));
        QCOMPARE(unmountFailure(hosted(11).domain), u"none"_s);
        QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(mounting.back())));
        QVERIFY(!QFileInfo::exists(mountPoint(11))); // its turn had not come
        mounting.pop_back();
        for (auto& task : mounting)
            await(std::move(task));
        QCOMPARE(m_mounter->sessions().size(), 11);
    }
};

QTEST_GUILESS_MAIN(TestMounter)
#include "tst_mounter.moc"
