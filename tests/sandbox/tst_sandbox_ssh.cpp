#include "sandbox/Sandbox.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {
constexpr int soon = 10000; // milliseconds

struct Outcome {
    int exitCode = -1;
    QString output;
    QString error;
};

bool listens(int port) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
    return socket.waitForConnected(1000);
}

/// Starts `command` for a login, through the sandbox's own ssh.
void startLogin(QProcess& process, const QString& binFolder, const QString& login, const QString& command) {
    process.start(binFolder + u"/ssh"_s, {u"-o"_s, u"StrictHostKeyChecking=accept-new"_s, u"-o"_s,
                                          u"BatchMode=yes"_s, login, command});
}
} // namespace

/// Real logins on a real sshd, and the program that runs it all.
class TestSandboxSsh : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder{QDir::tempPath() + u"/it's 100% a sandbox XXXXXX"_s};
    std::unique_ptr<sandbox::Sandbox> m_platform;

    [[nodiscard]] QString login(int index) const {
        const sandbox::HostedProject project = m_platform->people().first().projects.at(index);
        return u"ssh%1@%2"_s.arg(project.webspaceID).arg(project.domain);
    }

    Outcome run(int index, const QString& command) {
        QProcess ssh;
        startLogin(ssh, m_platform->ssh().binFolder(), login(index), command);
        ssh.waitForFinished(soon);
        return {ssh.exitCode(), QString::fromUtf8(ssh.readAllStandardOutput()),
                QString::fromUtf8(ssh.readAllStandardError())};
    }

    static bool answers(QProcess& session) {
        session.readAll();
        session.write("ping\n");
        return session.waitForReadyRead(1000);
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_folder.path()});
        QVERIFY(m_platform->hasSsh());
    }

    void cleanupTestCase() { m_platform.reset(); }

    void stopEndsSessionsEvenFrozenOnes() {
        const int port = m_platform->ssh().port();
        QProcess session;
        startLogin(session, m_platform->ssh().binFolder(), login(0), u"cat"_s);
        QTRY_VERIFY(answers(session));
        m_platform->ssh().freeze();
        m_platform->ssh().stop();
        QVERIFY(session.waitForFinished(soon));
        QCOMPARE(session.exitCode(), 255);
        QVERIFY(!listens(port));
        m_platform->ssh().start();
        QCOMPARE(m_platform->ssh().port(), port);
        QCOMPARE(run(1, u"true"_s).exitCode, 0);
    }

    void programEndsWithItsParentAndTakesAllAlong_data() {
        QTest::addColumn<int>("signal");
        QTest::newRow("end of input") << 0;
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGKILL") << SIGKILL;
    }

    void programEndsWithItsParentAndTakesAllAlong() {
        QFETCH(int, signal);
        const QTemporaryDir folder;
        QProcess program;
        program.start(QStringLiteral(SANDBOX_PROGRAM),
                      {u"--folder"_s, folder.path(), u"--projects"_s, u"10000"_s});
        while (!program.canReadLine())
            QVERIFY2(program.waitForReadyRead(soon), program.readAllStandardError().constData());
        const QJsonObject ready = QJsonDocument::fromJson(program.readLine()).object();
        const int port = ready.value(u"ssh_port"_s).toInt();
        QVERIFY(listens(port));
        QVERIFY(listens(QUrl(ready.value(u"server"_s).toString()).port()));
        QProcess session;
        startLogin(session, ready.value(u"bin"_s).toString(), u"ssh4711@www.projekt-00000.sandbox.test"_s,
                   u"cat"_s);
        QTRY_VERIFY(answers(session));

        if (signal == 0)
            program.closeWriteChannel();
        else
            ::kill(static_cast<pid_t>(program.processId()), signal);
        QVERIFY(program.waitForFinished(soon));
        QCOMPARE(program.exitStatus(), signal == SIGKILL ? QProcess::CrashExit : QProcess::NormalExit);
        QVERIFY(signal == SIGKILL || program.exitCode() == 0);
        QVERIFY(program.readAllStandardOutput().isEmpty());
        QVERIFY(session.waitForFinished(soon));
        QTRY_VERIFY(!listens(port));
    }
};

QTEST_GUILESS_MAIN(TestSandboxSsh)
#include "tst_sandbox_ssh.moc"
