#include "MounterFixture.h"

#include "Mounting/SSHFSProcess.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestMounter : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void aMountIsOneSessionAndItsHostsArePrivate() {
        const MountSession session = await(m_mounter->mount(project(0)));
        QCOMPARE(session.mountPoint, mountPoint(0));
        QCOMPARE(m_mounter->mountPoint(session.domain), std::optional(session.mountPoint));
        QCOMPARE(await(m_mounter->mount(project(0))).startedAt, session.startedAt);
        QCOMPARE(unmountFailure(session.domain), u"none"_s);
        QCOMPARE(unmountFailure(session.domain), u"none"_s); // no session: no error
        QVERIFY(QDir(session.mountPoint).isEmpty());
        const QFileInfo hosts(host().knownHostsFile());
        QVERIFY(hosts.size() > 0);
        constexpr QFile::Permissions others = QFile::ReadGroup | QFile::ReadOther;
        QCOMPARE(hosts.permissions() & others, QFile::Permissions());
        QCOMPARE(QFileInfo(host().privateFolder).permissions() & others, QFile::Permissions());
    }

    void projectNameInjectsNothing() {
        const QString proof = m_home->filePath(u"proof"_s);
        const QString script = m_home->filePath(u"evil.sh"_s);
        QFile file(script);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        file.write("#!/bin/sh\ntouch '" + proof.toUtf8() + "'\n");
        file.close();
        Project project = this->project(0);
        project.name = u"a\\,ssh_command="_s + script + u",b"_s;
        QCOMPARE(mountFailure(project), u"none"_s);
        QVERIFY(!QFile::exists(proof));
    }

    void refusedProjectsCreateNothing() {
        Project above = project(0);
        above.domain = u"../evil"_s;
        QCOMPARE(mountFailure(above), u"Mount fehlgeschlagen: Die Domain „../evil\" ist nicht zulässig."_s);
        Project torn = project(0);
        torn.path.append(QChar(QChar::Null));
        QVERIFY(mountFailure(torn).endsWith(u"ist nicht zulässig."_s));
        QVERIFY(QDir(m_home->path()).isEmpty());
    }

    void eachRefusalHasItsOwnMessage() {
        Project missing = project(0);
        missing.path = u"/no/such/folder"_s;
        QVERIFY(mountFailure(missing).contains(u"No such file or directory"_s));
        m_platform->ssh().acceptKey(false);
        QCOMPARE(mountFailure(project(0)),
                 MounterError(MounterError::Case::authenticationFailed, domain()).description());
        m_platform->ssh().acceptKey(true);
        m_platform->ssh().replaceHostKey();
        QVERIFY(mountFailure(project(0)).contains(u"Host key verification failed"_s));
    }

    void missingProgramsAndFoldersAreReported() {
        const auto failure = [this](const QString& sshfs, const QString& privateFolder) {
            HostSystem host = this->host();
            host.sshfsCandidates = {sshfs};
            host.privateFolder = privateFolder;
            m_mounter = mounter(host);
            return mountFailure(project(0));
        };
        const QString folder = m_home->filePath(u"p"_s);
        QCOMPARE(failure(u"/nowhere/sshfs"_s, folder),
                 u"sshfs ist nicht installiert. Bitte FUSE-T und sshfs einrichten."_s);
        QCOMPARE(failure(u"/usr/bin/true"_s, folder), u"Mount fehlgeschlagen: sshfs beendet ohne Mount"_s);
        QCOMPARE(failure(u"/usr/bin/sshfs"_s, {}),
                 u"Mount fehlgeschlagen: Application Support Verzeichnis nicht zugänglich."_s);
        QFile script(m_home->filePath(u"script"_s));
        QVERIFY(script.open(QIODevice::WriteOnly) && script.write("#!/nowhere\n") > 0);
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        QCOMPARE(failure(script.fileName(), folder), u"execvp: No such file or directory"_s);
        QVERIFY(QDir(m_home->filePath(u"Harvellon"_s)).removeRecursively());
        QVERIFY(script.rename(m_home->filePath(u"Harvellon"_s))); // a file where the mount points belong
        QCOMPARE(failure(u"/usr/bin/sshfs"_s, folder), mountPoint(0) + u": Not a directory"_s);
    }

    void anOccupiedMountPointIsForcedOffOnce() {
        mountFirst();
        m_mounter = mounter(host()); // the destructor leaves the mount in place
        const QString forced = host().forcedUnmount.executable + u' ' +
                               host().forcedUnmount.argumentsFor(mountPoint(0)).join(u' ');
        m_shell->answers.insert(forced, ShellResult{});
        m_shell->calls.clear();
        QCOMPARE(mountFailure(project(0)),
                 MounterError(MounterError::Case::mountPointOccupied, mountPoint(0)).description());
        QCOMPARE(m_shell->calls, QStringList(forced));
        m_shell->answers.clear();
        mountFirst();
    }

    void mountsOfAnEarlierRunAreForcedOff() {
        HostSystem host = this->host();
        host.homeFolder = m_home->filePath(u"link"_s); // the mount table tells where it leads
        QVERIFY(QFile::link(m_home->path(), host.homeFolder));
        for (const int signal : {SIGKILL, SIGSTOP}) {
            mountFirst();
            const QList<pid_t> former = processesWith(u"ssh4711@"_s);
            m_mounter = mounter(host); // the destructor leaves the mount in place
            QVERIFY(MountTable::lists(mountPoint(0)));
            for (const pid_t pid : former)
                ::kill(pid, signal);
            mountFirst();
            QVERIFY(QFile::exists(mounted(u"index.php"_s)));
            for (const pid_t pid : former)
                ::kill(pid, SIGKILL);
        }
    }

    void nobodyCanSaveIntoTheFolderWithoutItsMount() {
        QVERIFY(!await(m_mounter->mount(project(0))).coversFiles);
        loseFirst();
        QVERIFY(nobodyCanSaveInto(mountPoint(0)));

        // A local file, saved while an earlier version left the folder writable.
        QFile::setPermissions(mountPoint(0), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile file(mountPoint(0) + u"/lokal.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        const QFile::Permissions former = QFile::permissions(mountPoint(0));
        QVERIFY(await(m_mounter->mount(project(0))).coversFiles);
        QVERIFY(!file.exists());
        loseFirst();
        m_platform->ssh().acceptKey(false);
        QVERIFY(mountFailure(project(0)) != "none"_L1);
        QVERIFY(nobodyCanSaveInto(mountPoint(0)));      // an editor may have the tree open still
        QCOMPARE(unmountFirst(), UnmountResult::ended); // given up
        QCOMPARE(QFile::permissions(mountPoint(0)), former);
        m_platform->ssh().acceptKey(true);
        mountFirst();
        QCOMPARE(unmountFailure(domain()), u"none"_s);
        m_platform->ssh().acceptKey(false);
        for (const int index : {0, 1})
            QVERIFY(mountFailure(project(index)) != "none"_L1);
        QCOMPARE(QFile::permissions(mountPoint(0)), former); // else the user could not move the file
        QVERIFY(file.remove());
        QVERIFY(nobodyCanSaveInto(mountPoint(1)));
    }

    void unexpectedEndIsReportedOnce() {
        QStringList lost;
        std::optional<QCoro::Task<MountSession>> again;
        m_mounter->onUnexpectedTermination = [&](const QString& ended, qint32) {
            QVERIFY(m_mounter->sessions().isEmpty());
            lost.append(ended);
            again.emplace(m_mounter->mount(project(0))); // at once, while the dead mount is being cleared
        };
        mountFirst();
        for (const pid_t sshfs : processesWith(mountPoint(0)))
            ::kill(sshfs, SIGKILL);
        QTRY_VERIFY(again.has_value());
        await(std::move(*again));
        QVERIFY(QFile::exists(mounted({})));
        QCOMPARE(unmountFailure(domain()), u"none"_s);
        QTest::qWait(100);
        QCOMPARE(lost, QStringList{domain()}); // an expected end is not reported
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

    void mountUnderWayCanBeCancelled() {
        m_platform->ssh().freeze();
        for (const QString& way : {u"unmount"_s, u"end of the program"_s, u"end of the mounter"_s}) {
            m_mounter = mounter(host());
            auto mounting = m_mounter->mount(project(0));
            QTRY_COMPARE(blockedThreads(), 1); // the check of the mount waits for the server
            if (way == "unmount"_L1)
                QCOMPARE(unmountFailure(domain()), u"none"_s);
            else if (way == "end of the program"_L1)
                await(m_mounter->unmountAll());
            else
                m_mounter = mounter(host());
            QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(mounting)));
            verifyNothingLeft();
        }
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
