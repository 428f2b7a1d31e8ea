#include "sandbox/Sandbox.h"
#include "support/Leftovers.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

/// The sandbox leaves no sshd behind, however it ends.
class TestSandboxEnd : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    [[nodiscard]] QList<pid_t> servers() const {
        return processesWith(m_folder.path() + u"/ssh/sshd_config"_s);
    }

  private Q_SLOTS:

    void initTestCase() { sandbox::Sandbox({m_folder.path(), 0, true}); } // makes keys, which takes long

    void cleanup() {
        for (const pid_t left : servers())
            ::kill(left, SIGKILL);
    }

    void killedWhileSshdStarts() {
        for (int i = 0; i < 6; ++i) {
            QProcess program;
            program.start(QStringLiteral(SANDBOX_PROGRAM), {u"--folder"_s, m_folder.path()});
            QVERIFY(program.waitForStarted());
            QElapsedTimer timer;
            timer.start();
            while (servers().isEmpty() &&
                   timer.elapsed() < 10'000) // first the shell that starts and ends sshd
                QTest::qSleep(1);
            program.kill();
            QVERIFY(program.waitForFinished());
            QTRY_COMPARE(servers(), QList<pid_t>());
        }
    }
};

QTEST_GUILESS_MAIN(TestSandboxEnd)
#include "tst_sandbox_end.moc"
