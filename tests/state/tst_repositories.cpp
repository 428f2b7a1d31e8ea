#include "StateFixture.h"

#include "System/Git/GitFiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <unistd.h>

using namespace Qt::StringLiterals;

/// git in mounted projects.
class TestRepositories : public StateFixture {
    Q_OBJECT

    [[nodiscard]] QString git(const QStringList& arguments) const {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(u"/usr/bin/env"_s,
                      HostSystem::environmentOfGit(m_home->path()) + QStringList{u"git"_s} + arguments);
        process.waitForFinished();
        return QString::fromUtf8(process.readAll()).trimmed();
    }

    [[nodiscard]] QString mountPoint() const { return host().mountRoot() + u'/' + project(0).domain; }

    [[nodiscard]] int told() const { return static_cast<int>(messages().filter(u"schneller sein"_s).size()); }

    [[nodiscard]] QByteArray content(const QString& path) const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Mounts the first project, and waits until the question about a repository is answered.
    void connectAndAsk() {
        await(m_state->parts().connections.connect(project(0)));
        const auto asked = m_state->parts().sshfsMounter.ask(project(0).domain, [] { return true; });
        QVERIFY(asked);
        QTRY_VERIFY(asked->isFinished());
        QTest::qWait(200); // git is asked behind it
    }

    void disconnect() { await(m_state->parts().connections.disconnect(project(0).domain, false)); }

    void turn(bool on) {
        m_state->setAdaptsGit(on);
        QCOMPARE(m_state->adaptsGit(), on);
        QTRY_VERIFY(messages().last().contains(on ? u"eingestellt"_s : u"wieder entfernt"_s));
        QTRY_COMPARE(m_state->adaptsGit(), on);
    }

  private Q_SLOTS:

    void init() {
        StateFixture::init();
        signIn("erika");
    }

    void cleanup() {
        for (const QString& folder : {u"/.git"_s, u"/web/.git"_s})
            QDir(project(0).path + folder).removeRecursively();
        StateFixture::cleanup();
    }

    void aRepositoryIsToldOfOnce_data() {
        QTest::addColumn<QString>("folder");
        QTest::newRow("at the root") << u"/.git"_s;
        QTest::newRow("in the document folder") << u"/web/.git"_s;
    }

    void aRepositoryIsToldOfOnce() {
        QFETCH(const QString, folder);
        connectAndAsk();
        QCOMPARE(told(), 0);
        disconnect();
        QVERIFY(QDir().mkpath(project(0).path + folder));
        connectAndAsk();
        QTRY_COMPARE(told(), 1);
        QCOMPARE(messages().last(), // behind "Gemountet"
                 u"Git kann in %1 schneller sein: siehe Einstellungen."_s.arg(project(0).domain));
        QCOMPARE(m_state->activityLog()->entries().last().level, ActivityLogLevel::info);
        disconnect();
        connectAndAsk();
        QCOMPARE(told(), 1);

        turn(true);
        disconnect();
        start(); // another run
        connectAndAsk();
        QCOMPARE(told(), 0);
    }

    void nobodyIsToldWithoutGit() {
        QVERIFY(QDir().mkpath(project(0).path + u"/.git"_s));
        HostSystem without = host();
        without.gitCandidates.clear();
        start(without);
        connectAndAsk();
        QCOMPARE(told(), 0);
    }

    void whatIsMountedIsTrustedAndNothingElse() {
        const QString tree = project(0).path;
        QCOMPARE(git({u"init"_s, u"--quiet"_s, tree}), QString());
        for (const QString& path : {tree, tree + u"/.git"_s})
            if (::chown(QFile::encodeName(path), 12345, 12345) != 0)
                qputenv("GIT_TEST_ASSUME_DIFFERENT_OWNER", "1");
        const QStringList status{u"-C"_s, mountPoint(), u"status"_s};
        connectAndAsk();
        QVERIFY(git(status).contains(u"dubious ownership"_s));
        turn(true);
        QVERIFY2(git(status).startsWith(u"On branch"_s), qPrintable(git(status)));
        QCOMPARE(git({u"-C"_s, mountPoint(), u"config"_s, u"core.checkStat"_s}), u"minimal"_s);
        disconnect();
        QVERIFY(!content(GitFiles::configPath(host())).contains("[safe]"));
        start(); // the user's configuration tells that it is on
        QTRY_VERIFY(m_state->adaptsGit());
        connectAndAsk();
        QVERIFY(git(status).startsWith(u"On branch"_s));
        turn(false);
        QVERIFY(git(status).contains(u"dubious ownership"_s));
        QCOMPARE(::chown(QFile::encodeName(tree), ::getuid(), ::getgid()), 0);
    }

    void aRefusalIsToldAndTheSwitchGoesBack() {
        const QString lock = m_home->filePath(u".gitconfig.lock"_s);
        QFile held(lock);
        QVERIFY(held.open(QIODevice::WriteOnly));
        m_state->setAdaptsGit(true);
        QTRY_VERIFY(!m_state->adaptsGit());
        QVERIFY(m_state->gitProblem().contains(u".gitconfig: "_s));
        const ActivityLogEntry line = m_state->activityLog()->entries().last();
        QCOMPARE(line.level, ActivityLogLevel::error);
        QVERIFY(line.message.startsWith(u"Die Git-Einstellungen konnten nicht geändert werden: "_s));
        QVERIFY(held.remove());
        turn(true);
        QVERIFY(m_state->gitProblem().isEmpty());
        m_state->setAdaptsGit(false); // and again, before git has answered
        m_state->setAdaptsGit(true);
        m_state->setAdaptsGit(false);
        QTRY_COMPARE(content(m_home->filePath(u".gitconfig"_s)), QByteArray());
        QVERIFY(!m_state->adaptsGit());
    }

    void theSwitchFollowsTheConfiguration() {
        turn(true);
        const QByteArray entry = content(m_home->filePath(u".gitconfig"_s));
        QVERIFY(QFile::remove(m_home->filePath(u".gitconfig"_s)));
        await(m_state->parts().repositories.look());
        QVERIFY(!m_state->adaptsGit());
        QFile again(m_home->filePath(u".gitconfig"_s));
        QVERIFY(again.open(QIODevice::WriteOnly) && again.write(entry) > 0);
        again.close();
        QVERIFY(QDir().mkpath(project(0).path + u"/.git"_s));
        connectAndAsk(); // looks before it tells
        QVERIFY(m_state->adaptsGit());
        QCOMPARE(told(), 0);
    }
};

QTEST_MAIN(TestRepositories)
#include "tst_repositories.moc"
