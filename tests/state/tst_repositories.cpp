#include "StateFixture.h"

#include "System/Git/GitFiles.h"

#include <QDir>

using namespace Qt::StringLiterals;

/// git in mounted projects.
class TestRepositories : public StateFixture {
    Q_OBJECT

    [[nodiscard]] int told() const { return static_cast<int>(messages().filter(u"schneller sein"_s).size()); }

    /// Mounts the first project, and waits until the question about a repository is answered.
    void connectAndAsk() {
        connectTo(0);
        const auto asked = m_state->parts().sshfsMounter.ask(project(0).domain, [] { return true; });
        QVERIFY(asked);
        QTRY_VERIFY(asked->isFinished());
        QTest::qWait(200); // git is asked behind it
    }

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
        QDir(project(0).path + u"/.git"_s).removeRecursively();
        StateFixture::cleanup();
    }

    void aRepositoryIsToldOfOnce() {
        connectAndAsk();
        QCOMPARE(told(), 0);
        disconnectFrom(0);
        QVERIFY(QDir().mkpath(project(0).path + u"/web/.git"_s));
        connectAndAsk();
        QTRY_COMPARE(told(), 1);
        QCOMPARE(messages().last(), // behind "Gemountet"
                 u"Git kann in %1 schneller sein: siehe Einstellungen."_s.arg(domain(0)));
        QCOMPARE(m_state->activityLog()->entries().last().level, ActivityLogLevel::info);
        disconnectFrom(0);
        connectAndAsk();
        QCOMPARE(told(), 1);
        turn(true);
        disconnectFrom(0);
        start(); // another run
        connectAndAsk();
        QCOMPARE(told(), 0);
        turn(false);
        disconnectFrom(0);
        const QString tree = project(0).path;
        QVERIFY(QDir().rename(tree + u"/web/.git"_s, tree + u"/.git"_s));
        connectAndAsk();
        QTRY_COMPARE(told(), 1);
    }

    void whatIsMountedIsTrustedAndNothingElse() {
        const auto trusted = [this] {
            return content(GitFiles::configPath(host())).count(QFile::encodeName(domain(0))) > 0;
        };
        connectTo(0);
        turn(true);
        QVERIFY(trusted());
        disconnectFrom(0);
        QVERIFY(!trusted());
        start(); // the user's configuration tells that it is on
        QTRY_VERIFY(m_state->adaptsGit());
        connectTo(0);
        QVERIFY(trusted());
        turn(false);
        QVERIFY(!trusted());
    }

    void aRefusalIsToldAndTheSwitchGoesBack() {
        const QString lock = m_home->filePath(u".gitconfig.lock"_s);
        QFile held(lock);
        QVERIFY(held.open(QIODevice::WriteOnly));
        m_state->setAdaptsGit(true);
        QTRY_VERIFY(!m_state->adaptsGit());
        const ActivityLogEntry line = m_state->activityLog()->entries().last();
        QCOMPARE(line.level, ActivityLogLevel::error);
        QVERIFY(line.message.startsWith(u"Die Git-Einstellungen konnten nicht geändert werden: "_s));
        QVERIFY(held.remove());
        turn(true);
        m_state->setAdaptsGit(false); // and again, before git has answered
        m_state->setAdaptsGit(true);
        m_state->setAdaptsGit(false);
        QTRY_COMPARE(content(m_home->filePath(u".gitconfig"_s)), QByteArray());
        QVERIFY(!m_state->adaptsGit());
    }
};

QTEST_GUILESS_MAIN(TestRepositories)
#include "tst_repositories.moc"
