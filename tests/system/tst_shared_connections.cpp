#include "System/Ssh/SharedConnections.h"

#include "System/Files/PrivateFolder.h"
#include "System/Ssh/SocketPath.h"
#include "sandbox/Sandbox.h"
#include "sandbox/ssh/SlowLine.h"
#include "support/Await.h"
#include "support/Leftovers.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

/// Real ssh masters to a real sshd. After each test no process of ssh may be left.
class TestSharedConnections : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<QTemporaryDir> m_home;
    Shell m_shell;
    std::unique_ptr<SharedConnections> m_shared;
    QString m_login;

    [[nodiscard]] HostSystem host() const {
        HostSystem host = HostSystem::linuxDesktop(m_home->path());
        host.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        host.privateFolder = m_home->path();
        host.socketFolder = m_home->filePath(u"s"_s);
        return host;
    }

    /// How many connections the server has accepted so far.
    [[nodiscard]] qsizetype connections() const {
        QFile log(m_platformFolder.filePath(u"ssh/sshd.log"_s));
        return log.open(QIODevice::ReadOnly) ? log.readAll().count("Accepted publickey") : -1;
    }

    [[nodiscard]] QString socket() const {
        const QStringList found =
            QDir(m_home->filePath(u"s"_s)).entryList(QDir::System | QDir::NoDotAndDotDot);
        return found.isEmpty() ? QString() : m_home->filePath(u"s/"_s) + found.first();
    }

    /// What a shared call prints; "none" where nothing shares it.
    QString shared(const QStringList& command = {u"echo"_s, u"hier"_s}) {
        const std::optional<ShellResult> result = await(m_shared->run(m_login, command));
        return result ? result->stdout.trimmed() : u"none"_s;
    }

    void open() {
        m_shared->open(m_login);
        QTRY_COMPARE(shared(), u"hier"_s);
    }

    /// A user's shell over the master, as a terminal starts it.
    void startShell(QProcess& terminal) {
        const QStringList over = await(m_shared->answering(m_login));
        QVERIFY(!over.isEmpty());
        terminal.start(host().ssh, over + QStringList{m_login, u"cat"_s});
        QVERIFY(echoes(terminal));
    }

    static bool echoes(QProcess& terminal) {
        terminal.write("x\n");
        return terminal.waitForReadyRead(5000) && terminal.readAll() == "x\n";
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        QVERIFY(m_platform->hasSsh());
        const sandbox::HostedProject project = m_platform->people().at(0).projects.at(0);
        m_login = u"ssh%1@%2"_s.arg(project.webspaceID).arg(project.domain);
    }

    void init() {
        m_home = std::make_unique<QTemporaryDir>();
        m_shared = std::make_unique<SharedConnections>(host(), m_shell);
    }

    void cleanup() {
        await(m_shared->close());
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        QTRY_COMPARE(processesWith(m_home->path()), QList<pid_t>());
        QVERIFY(m_shared->isIdle());
    }

    void callsShareOneConnection() {
        const qsizetype before = connections();
        QCOMPARE(shared(), u"none"_s); // not mounted: nothing connects
        QVERIFY(m_shared->isIdle());
        open();
        QCOMPARE(shared({u"echo"_s, u"'a b'"_s}), u"a b"_s);
        QCOMPARE(await(m_shared->run(m_login, {u"false"_s}))->exitCode, 1);
        QCOMPARE(connections(), before + 1);
        m_shared->release(m_login);
        QCOMPARE(shared(), u"none"_s);
    }

    void frozenConnectionIsGivenUpInTime() {
        sandbox::SlowLine line(m_platform->ssh().port());
        m_platform->ssh().letClientsUse(line.port());
        open();
        QProcess terminal;
        startShell(terminal);
        line.freezeConnections();
        const qsizetype before = connections();
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(await(m_shared->answering(m_login)), QStringList());
        QVERIFY2(timer.elapsed() >= 1900 && timer.elapsed() < 10'000,
                 qPrintable(QString::number(timer.elapsed())));
        QTRY_COMPARE(shared(), u"hier"_s); // over another
        QCOMPARE(connections(), before + 1);
        line.thawConnections();
        QVERIFY(echoes(terminal)); // nobody's shell is cut off
        terminal.closeWriteChannel();
        QVERIFY(terminal.waitForFinished());
    }

    void connectionThatHasEndedIsReplacedByTheNextCall() {
        open();
        for (const pid_t master : processesWith(socket()))
            ::kill(master, SIGKILL); // the socket stays
        QTRY_COMPARE(processesWith(socket()), QList<pid_t>());
        QCOMPARE(shared(), u"none"_s);
        QTRY_COMPARE(shared(), u"hier"_s);
    }

    void shellOutlivesTheLastMountAndTheProgram() {
        open();
        QProcess terminal;
        startShell(terminal);
        m_shared->release(m_login);
        await(m_shared->close());
        m_shared = std::make_unique<SharedConnections>(host(), m_shell);
        QVERIFY(!QFile::exists(socket()));
        QVERIFY(echoes(terminal));
        open(); // beside it
        QVERIFY(echoes(terminal));
        terminal.closeWriteChannel();
        QVERIFY(terminal.waitForFinished());
        QCOMPARE(terminal.exitCode(), 0);
    }

    void whatAKilledRunHasLeftIsReplaced() {
        open();
        const QList<pid_t> former = processesWith(socket());
        QCOMPARE(former.size(), 1);
        m_shared = std::make_unique<SharedConnections>(host(), m_shell);
        open();
        QTRY_COMPARE(processesWith(socket()).size(), 1);
        QVERIFY(processesWith(socket()) != former);
    }

    void releaseWhileItOpensLeavesNothing() {
        m_shared->open(m_login);
        m_shared->release(m_login);
        await(m_shared->close());
        QCOMPARE(socket(), QString());
        m_shared->open(m_login);
        QVERIFY(m_shared->isIdle());
    }

    void folderOfSomebodyElseIsRefused() {
        // $1 is the folder, in one of its own
        QStringList makes{u"mkdir -m 770 $1"_s, u"mkdir -m 703 $1"_s,
                          u"mkdir -m 700 $1.real; ln -s $1.real $1"_s, u"chmod 1777 ${1%/*}"_s,
                          u"rmdir ${1%/*}"_s};
        if (::geteuid() == 0)
            makes += {u"mkdir -m 700 $1; chown 65534 $1"_s, u"chown 65534 ${1%/*}"_s};
        for (const QString& make : std::as_const(makes)) {
            const QTemporaryDir above;
            QVERIFY(QDir(above.path()).mkdir(u"d"_s));
            const QString folder = above.filePath(u"d/s"_s);
            QCOMPARE(QProcess::execute(u"/bin/sh"_s, {u"-ec"_s, make, u"sh"_s, folder}), 0);
            QVERIFY2(!makePrivateFolder(folder), qPrintable(make));
        }
        const QTemporaryDir read; // others may read the folder in it
        QVERIFY(QDir(read.path()).mkdir(u"s"_s) && makePrivateFolder(read.filePath(u"s"_s)));
    }

    void socketThatSomebodyElseMayHavePutThereIsNotUsed() {
        open();
        const QByteArray folder = QFile::encodeName(host().socketFolder);
        QCOMPARE(::chmod(folder.constData(), 0777), 0);
        const auto former = std::exchange(m_shared, std::make_unique<SharedConnections>(host(), m_shell));
        m_shared->open(m_login);
        QTRY_COMPARE(shared(), u"none"_s);
        QCOMPARE(::chmod(folder.constData(), 0700), 0);
        await(former->close());
    }

    void socketPathsAreShortAndPlain() {
        const QString name = QString(300, u'x') + u"@example.org"_s;
        const QString path = socketPath(u"/run/user/1000/harvellon-ssh"_s, name).value_or(QString());
        QCOMPARE(path.size(), QStringView(u"/run/user/1000/harvellon-ssh/0123456789abcdef").size());
        QVERIFY(path != socketPath(u"/run/user/1000/harvellon-ssh"_s, name + u'x'));
        QVERIFY(socketPath(u"/"_s + QString(68, u'x'), name)); // 86 and what ssh adds
        QVERIFY(!socketPath(u"/"_s + QString(69, u'x'), name));
        QVERIFY(!socketPath(u"/"_s + QString(40, u'ä'), name));
        for (const QChar special : u" %$~\"'\n;"_s)
            QVERIFY(!socketPath(u"/run/a"_s + special, name));
    }
};

QTEST_GUILESS_MAIN(TestSharedConnections)
#include "tst_shared_connections.moc"
