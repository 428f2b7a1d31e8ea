#include "MounterFixture.h"

#include "Mounting/MountQuestions.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/ServerState.h"
#include "System/Async.h"

#include <QElapsedTimer>
#include <QProcess>

#include <csignal>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr qint64 megabyte = 1024 * 1024;

/// Another program that writes `size` bytes into a file. In this process the file would be inherited by every
/// command the mounter starts, which would have to wait for the server when they close it.
class Writer {
  public:
    Writer(const QString& path, qint64 size) {
        m_program.start(u"/usr/bin/dd"_s, {u"if=/dev/zero"_s, u"of="_s + path, u"bs=64k"_s,
                                           u"count=%1"_s.arg(size / (64 * 1024))});
    }

    ~Writer() { m_program.waitForFinished(); }
    Q_DISABLE_COPY_MOVE(Writer)

    bool succeeds() {
        return QTest::qWaitFor([this] { return m_program.state() == QProcess::NotRunning; }, 30'000) &&
               m_program.exitCode() == 0;
    }

  private:
    QProcess m_program;
};

/// What an editor loads: it looks at the file, opens it and reads as much as it saw.
QByteArray loaded(const QString& path) {
    struct stat status {};

    const QByteArray name = QFile::encodeName(path);
    ::stat(name.constData(), &status);
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(file.size()) : QByteArray();
}

void store(const QString& path, qsizetype size, char filling) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(file.write(QByteArray(size, filling)), qint64(size));
}
} // namespace

/// What a mount meets in the hours after it was made: colleagues, slow lines, lost servers, sleep.
class TestLongDay : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void colleaguesChangesAreReadWhole_data() {
        QTest::addColumn<QString>("change");
        for (const char* change : {"grew", "shrank", "replaced", "made again"})
            QTest::newRow(change) << QString::fromLatin1(change);
    }

    void colleaguesChangesAreReadWhole() {
        QFETCH(const QString, change);
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QString onServer = project(0).path + u"/web/seite.html"_s;
        const QString mounted = mountPoint(0) + u"/web/seite.html"_s;
        store(onServer, 1000, 'a');
        QCOMPARE(loaded(mounted), QByteArray(1000, 'a'));
        const qsizetype size = change == "shrank"_L1 ? 500 : 5000;
        if (change == "replaced"_L1) {
            store(onServer + u".neu"_s, size, 'b');
            QCOMPARE(::rename(QFile::encodeName(onServer + u".neu"_s).constData(),
                              QFile::encodeName(onServer).constData()),
                     0);
        } else {
            if (change == "made again"_L1)
                QVERIFY(QFile::remove(onServer));
            store(onServer, size, 'b');
        }
        const QByteArray content = loaded(mounted);
        QCOMPARE(content.size(), size);
        QCOMPARE(content, QByteArray(size, 'b'));
    }

    void slowUploadGoesOnAfterTheDisconnect() {
        useLine({20ms, 1'000'000});
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QString file = u"/web/gross.bin"_s;
        Writer writer(mountPoint(0) + file, 6 * megabyte);
        QTRY_VERIFY(QFileInfo(project(0).path + file).size() > megabyte / 2);
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values())), QStringList{hosted(0).domain});
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::writing);
        QVERIFY(!MountTable::lists(mountPoint(0)));
        QCOMPARE(await(transferringDomains(m_mounter->keptUntilClosed(), 400ms)),
                 QStringList{hosted(0).domain});
        QVERIFY(writer.succeeds());
        QCOMPARE(QFileInfo(project(0).path + file).size(), 6 * megabyte);
        QTRY_VERIFY_WITH_TIMEOUT(m_mounter->keptUntilClosed().isEmpty(), 20'000);
    }

    void silentServerIsCutOffAndToldFromASlowOne() {
        useLine({20ms, 1'000'000});
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const MountSession session = m_mounter->sessions().value(hosted(0).domain);
        QCOMPARE(await(serverState(session, 600ms)), ServerState::answering);
        Writer writer(mountPoint(0) + u"/web/riesig.bin"_s, 8 * megabyte);
        QTRY_VERIFY(QFileInfo(project(0).path + u"/web/riesig.bin"_s).size() > megabyte / 2);
        QVERIFY(await(serverState(session, 600ms)) != ServerState::silent);
        m_line->freezeConnections();
        QTRY_COMPARE(await(serverState(session, 600ms)), ServerState::silent);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::cutOff);
        QVERIFY2(timer.elapsed() < 10'000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(!writer.succeeds());
        verifyNothingLeft();
    }

    void openFilesAloneAreNotBeingWritten() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile open(mountPoint(0) + u"/web/offen.txt"_s);
        QVERIFY(open.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(open.write("x"), 1);
        QTest::qWait(100);
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values())), QStringList());
    }

    void onlyOurOwnMountsAreLeftBehind() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const QString foreign = m_home->filePath(u"Harvellon/eigener"_s);
        QVERIFY(QDir().mkpath(foreign));
        QCOMPARE(QProcess::execute(u"/usr/bin/sshfs"_s,
                                   {project(1).sshUser() + u'@' + project(1).domain + u':' + project(1).path,
                                    foreign, u"-o"_s, u"StrictHostKeyChecking=no"_s}),
                 0);
        m_mounter = mounter(host()); // as after a crash
        QCOMPARE(m_mounter->leftBehind(), QStringList{hosted(0).domain});
        QVERIFY(await(m_mounter->clearLeftBehind(hosted(0).domain)));
        QVERIFY(MountTable::lists(foreign));
        QCOMPARE(QProcess::execute(u"fusermount3"_s, {u"-u"_s, foreign}), 0);
        QTRY_COMPARE(processesWith(foreign), QList<pid_t>());
    }

    void nothingMountsOnceTheEndHasBegun() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        auto unmounting = m_mounter->unmount(hosted(0).domain);
        auto waiting = m_mounter->mount(project(0)); // for the unmount
        m_mounter->close();
        await(std::move(unmounting));
        QVERIFY_THROWS_EXCEPTION(MounterError, await(std::move(waiting)));
        QVERIFY(mountFailure(project(1)) != "none"_L1);
    }

    void aSilentMountHoldsOneThread() {
        useLine();
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        m_line->freezeConnections();
        const QString folder = mountPoint(0) + u"/web/unbekannt"_s;
        QList<QFuture<bool>> answers;
        for (int click = 0; click < 5; ++click)
            answers.append(*m_mounter->ask(hosted(0).domain, [folder] { return QFile::exists(folder); }));
        QTRY_COMPARE(blockedThreads(), 1);
        QTest::qWait(200);
        QCOMPARE(blockedThreads(), 1);
        QCOMPARE(await(renewSilentConnections(m_mounter->sessions().values(), 300ms)),
                 QStringList{hosted(0).domain});
        for (const QFuture<bool>& answer : answers)
            QVERIFY(await(Async::finishesWithin(answer, 3s)));
    }

    void anotherNetworkGetsANewConnection() {
        useLine();
        for (const int index : {0, 1})
            QCOMPARE(mountFailure(project(index)), u"none"_s);
        m_line->freezeConnections();
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        const QHash<QString, MountSession> before = m_mounter->sessions();
        QElapsedTimer timer;
        timer.start();
        const QStringList renewed = await(renewSilentConnections(before.values(), 2s));
        QCOMPARE(QSet<QString>(renewed.begin(), renewed.end()),
                 (QSet<QString>{hosted(0).domain, hosted(1).domain}));
        for (const int index : {0, 1})
            QVERIFY(!QDir(mountPoint(index)).isEmpty());
        QVERIFY2(timer.elapsed() < 6000,
                 qPrintable(QString::number(timer.elapsed()))); // keep-alive takes 45 s
        for (const MountSession& session : before)
            QCOMPARE(m_mounter->sessions().value(session.domain).process, session.process);
        QCOMPARE(await(renewSilentConnections(before.values(), 300ms)), QStringList()); // they answer now
    }

    void beforeSleepOnlyIdleMountsAreDetached() {
        for (const int index : {0, 1, 2})
            QCOMPARE(mountFailure(project(index)), u"none"_s);
        QFile inUse(mountPoint(1) + u"/neu.txt"_s);
        QVERIFY(inUse.open(QIODevice::WriteOnly));
        int ended = 0;
        m_mounter->onUnexpectedTermination = [&](const QString&, qint32) { ++ended; };
        QElapsedTimer timer;
        timer.start();
        QStringList detached;
        for (const Project& project : await(m_mounter->detachIdle()))
            detached.append(project.domain);
        QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
        detached.sort();
        QStringList expected{hosted(0).domain, hosted(2).domain};
        expected.sort();
        QCOMPARE(detached, expected);
        QCOMPARE(m_mounter->connectedDomains(), QSet<QString>{hosted(1).domain});
        QCOMPARE(ended, 0);
        for (const pid_t pid : processesWith(mountPoint(1)))
            ::kill(pid, SIGKILL);
        QTRY_COMPARE(ended, 1); // the mount that stayed is still watched
    }
};

QTEST_GUILESS_MAIN(TestLongDay)
#include "tst_long_day.moc"
