#include "MounterFixture.h"

#include "Mounting/Ending/ServerState.h"
#include "Mounting/MountQuestions.h"
#include "Mounting/SSHFSProcess.h"
#include "System/Async.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>

#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
constexpr qint64 megabyte = 1024 * 1024;
} // namespace

/// What a mount meets in the hours after it was made: colleagues, slow lines, lost servers, sleep.
class TestLongDay : public MounterFixture {
    Q_OBJECT

  private Q_SLOTS:

    void noUploadIsCut_data() {
        QTest::addColumn<QString>("event");
        for (const char* event : {"slow disconnect", "silent disconnect", "silence in another network"})
            QTest::newRow(event) << QString::fromLatin1(event);
    }

    void noUploadIsCut() {
        QFETCH(const QString, event);
        useLine({20ms, 1'000'000});
        mountFirst();
        const MountSession session = m_mounter->sessions().value(domain());
        QCOMPARE(await(serverState(session, 600ms)), ServerState::answering);
        QProcess writer; // a file of this process would be inherited by every command that the mounter starts
        writer.start(u"/usr/bin/dd"_s,
                     {u"if=/dev/zero"_s, u"of="_s + mounted(event), u"bs=64k"_s, u"count=64"_s});
        QTRY_VERIFY(QFileInfo(onServer(event)).size() > megabyte / 2);
        if (event.startsWith(u"slow"_s)) {
            QCOMPARE(unmountFirst(), UnmountResult::writing);
            QVERIFY(!MountTable::lists(mountPoint(0)));
        } else {
            m_line->freezeConnections();
            QTRY_COMPARE(await(serverState(session, 600ms)), ServerState::silent);
            if (event.endsWith(u"disconnect"_s)) {
                QCOMPARE(unmountFirst(), UnmountResult::stalled);
                m_line->thawConnections();
            } else {
                auto renewing = renewSilentConnection(session, {300ms, 10s});
                QTest::qWait(1000);
                m_line->thawConnections();
                QVERIFY(!await(std::move(renewing)));
            }
        }
        QTRY_COMPARE_WITH_TIMEOUT(writer.state(), QProcess::NotRunning, 30'000);
        QCOMPARE(writer.exitCode(), 0);
        QCOMPARE(QFileInfo(onServer(event)).size(), 4 * megabyte);
        if (!event.endsWith(u"network"_s))
            QTRY_VERIFY_WITH_TIMEOUT(m_mounter->keptUntilClosed().isEmpty(), 20'000);
    }

    void writingIsSeen() {
        mountFirst();
        QFile file(mounted(u"protokoll.txt"_s));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QTest::qWait(100);
        const QList<MountSession> mounts = m_mounter->sessions().values();
        QCOMPARE(await(writtenDomains(mounts, {})), QStringList()); // open alone
        m_platform->ssh().freeze();                                 // what was saved may be under way
        QCOMPARE(await(writtenDomains(mounts, {})), QStringList{domain()});
        m_platform->ssh().thaw();
        QTimer writes;
        writes.callOnTimeout([&file] { file.write("eine Zeile\n"); });
        writes.start(1000); // with pauses
        QCOMPARE(await(writtenDomains(mounts, {})), QStringList{domain()});
        writes.start(100);
        auto unmounting = m_mounter->unmount(domain());
        QTRY_VERIFY(!MountTable::lists(mountPoint(0)));
        QCOMPARE(await(writtenDomains(m_mounter->sessions().values(), m_mounter->keptUntilClosed())),
                 QStringList{domain()}); // for who quits right after it
        await(std::move(unmounting));
        file.close();
    }

    void onlyOurOwnMountsAreLeftBehind() {
        mountFirst();
        const QString foreign = m_home->filePath(u"Harvellon/eigener"_s);
        QVERIFY(QDir().mkpath(foreign));
        QCOMPARE(QProcess::execute(u"/usr/bin/sshfs"_s,
                                   {project(1).sshUser() + u'@' + project(1).domain + u':' + project(1).path,
                                    foreign, u"-o"_s, u"StrictHostKeyChecking=no"_s}),
                 0);
        m_mounter = mounter(host()); // as after a crash
        QCOMPARE(m_mounter->leftBehind(), QStringList{domain()});
        QVERIFY(await(m_mounter->clearLeftBehind(domain())));
        QVERIFY(MountTable::lists(foreign));
        QCOMPARE(QProcess::execute(u"fusermount3"_s, {u"-u"_s, foreign}), 0);
        QTRY_COMPARE(processesWith(foreign), QList<pid_t>());
    }

    void nothingMountsOnceTheEndHasBegun() {
        mountFirst();
        auto unmounting = m_mounter->unmount(domain());
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
        mountFirst();
        m_line->freezeConnections();
        const QString folder = mounted(u"unbekannt"_s);
        QList<QFuture<bool>> answers;
        for (int click = 0; click < 5; ++click)
            answers.append(*m_mounter->ask(domain(), [folder] { return QFile::exists(folder); }));
        QTRY_COMPARE(blockedThreads(), 1);
        QTest::qWait(200);
        QCOMPARE(blockedThreads(), 1);
        QVERIFY(await(renewSilentConnection(m_mounter->sessions().value(domain()), {300ms, 300ms})));
        for (const QFuture<bool>& answer : answers)
            QVERIFY(await(Async::finishesWithin(answer, 3s)));
    }
};

QTEST_GUILESS_MAIN(TestLongDay)
#include "tst_long_day.moc"
