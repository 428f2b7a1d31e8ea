#include "MounterFixture.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/MountQuestions.h"
#include "Mounting/SSHFSProcess.h"
#include "System/Async.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

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
        Writer writer(mountPoint(0) + file, 7 * megabyte);
        QTRY_VERIFY(QFileInfo(project(0).path + file).size() > megabyte / 2);
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values(), {})), QStringList{hosted(0).domain});
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::writing);
        QVERIFY(!MountTable::lists(mountPoint(0)));
        QCOMPARE(await(writtenDomains({}, m_mounter->keptUntilClosed())), QStringList{hosted(0).domain});
        QVERIFY(writer.succeeds());
        QCOMPARE(QFileInfo(project(0).path + file).size(), 7 * megabyte);
        QTRY_VERIFY_WITH_TIMEOUT(m_mounter->keptUntilClosed().isEmpty(), 20'000);
    }

    void aShortSilenceCutsNoUpload_data() {
        QTest::addColumn<QString>("event");
        QTest::newRow("disconnect") << u"disconnect"_s;
        QTest::newRow("another network") << u"network"_s;
    }

    void aShortSilenceCutsNoUpload() {
        QFETCH(const QString, event);
        useLine({20ms, 1'000'000});
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        const MountSession session = m_mounter->sessions().value(hosted(0).domain);
        QCOMPARE(await(serverState(session, 600ms)), ServerState::answering);
        const QString file = u"/web/"_s + event;
        Writer writer(mountPoint(0) + file, 2 * megabyte);
        QTRY_VERIFY(QFileInfo(project(0).path + file).size() > megabyte / 2);
        m_line->freezeConnections();
        QTRY_COMPARE(await(serverState(session, 600ms)), ServerState::silent);
        if (event == "disconnect"_L1) {
            QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::stalled);
            m_line->thawConnections();
        } else {
            auto renewing = renewSilentConnection(session, {300ms, 10s});
            QTest::qWait(1000);
            m_line->thawConnections();
            QVERIFY(!await(std::move(renewing)));
        }
        QVERIFY(writer.succeeds());
        QCOMPARE(QFileInfo(project(0).path + file).size(), 2 * megabyte);
    }

    void writingWithPausesIsWriting() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/protokoll.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QTest::qWait(100);
        const QList<MountSession> mounts = m_mounter->sessions().values();
        QCOMPARE(await(writtenDomains(mounts, {})), QStringList()); // open alone
        QTimer writes;
        writes.callOnTimeout([&file] { file.write("eine Zeile\n"); });
        writes.start(1000);
        QCOMPARE(await(writtenDomains(mounts, {})), QStringList{hosted(0).domain});
    }

    void aDisconnectDuringTheWayToSleepIsDone() {
        QCOMPARE(mountFailure(project(0)), u"none"_s);
        QFile file(mountPoint(0) + u"/web/offen.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        auto detaching = m_mounter->detachIdle();
        QCOMPARE(await(m_mounter->unmount(hosted(0).domain)), UnmountResult::filesOpen);
        QVERIFY(await(std::move(detaching)).isEmpty());
        QVERIFY(!MountTable::lists(mountPoint(0)));
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
        MountLimits limits = MounterFixture::limits();
        limits.warmUp.readers = 0; // they would hang too
        m_mounter = mounter(host(), limits);
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
        QVERIFY(await(renewSilentConnection(m_mounter->sessions().value(hosted(0).domain), {300ms, 300ms})));
        for (const QFuture<bool>& answer : answers)
            QVERIFY(await(Async::finishesWithin(answer, 3s)));
    }
};

QTEST_GUILESS_MAIN(TestLongDay)
#include "tst_long_day.moc"
