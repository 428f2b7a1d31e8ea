#include "System/Native/SleepMonitor.h"

#include "support/PrivateBus.h"
#include "support/StandInLoginManager.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int quiet = 150; ///< milliseconds in which nothing may come
constexpr auto never = 1h; ///< a limit that no test reaches

qsizetype openDescriptors() {
    return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

/// As QTest::qWaitFor, without its pauses of ten milliseconds.
bool soon(const std::function<bool()>& condition) {
    const QDeadlineTimer limit(5s);
    while (!condition() && !limit.hasExpired()) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return condition();
}

/// A sleep monitor that counts what it is told.
struct Program {
    explicit Program(std::chrono::milliseconds limit = never) : monitor(nullptr, limit) {}

    SleepMonitor monitor;
    QSignalSpy sleeps{&monitor, &SleepMonitor::aboutToSleep};
    QSignalSpy wakes{&monitor, &SleepMonitor::wokeUp};
};

} // namespace

class TestSleep : public QObject {
    Q_OBJECT

    PrivateBus m_bus;
    std::unique_ptr<StandInLoginManager> m_manager;

  private Q_SLOTS:

    void initTestCase() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8()); }

    void init() {
        m_bus.start();
        m_manager = std::make_unique<StandInLoginManager>();
        QVERIFY(m_manager->start(m_bus.address()));
    }

    void cleanup() { m_manager.reset(); }

    void sleepWaitsForTheProgram() {
        Program program;
        QTRY_VERIFY(m_manager->lockIsHeld());
        const QVariantList request{u"sleep"_s, u"Harvellon Connect"_s,
                                   u"Verbindungen werden vor dem Ruhezustand getrennt"_s, u"delay"_s};
        QCOMPARE(m_manager->requests, QList<QVariantList>{request});
        m_manager->sleep();
        QTRY_COMPARE(program.sleeps.size(), 1);
        QTest::qWait(quiet);
        QVERIFY(m_manager->lockIsHeld());
        program.monitor.allowSleep();
        program.monitor.allowSleep();
        QTRY_VERIFY(!m_manager->lockIsHeld());

        m_manager->wake();
        QTRY_COMPARE(program.wakes.size(), 1);
        QTRY_VERIFY(m_manager->lockIsHeld());
        program.monitor.allowSleep(); // late: the system is awake
        QTest::qWait(quiet);
        QCOMPARE(m_manager->locksHeld(), 1);
        QCOMPARE(program.sleeps.size(), 1);
        QCOMPARE(program.wakes.size(), 1);
    }

    void theLimitAllowsSleep() {
        constexpr auto limit = 400ms;
        const Program program(limit);
        QTRY_VERIFY(m_manager->lockIsHeld());
        m_manager->sleep();
        QTRY_COMPARE(program.sleeps.size(), 1);
        QElapsedTimer timer;
        timer.start();
        QTRY_VERIFY_WITH_TIMEOUT(!m_manager->lockIsHeld(), 5000);
        QVERIFY2(timer.elapsed() > limit.count() / 2, qPrintable(QString::number(timer.elapsed())));
    }

    void aRestartedLoginManagerIsFollowed() {
        Program program;
        connect(&program.monitor, &SleepMonitor::aboutToSleep, &program.monitor, &SleepMonitor::allowSleep);
        QTRY_VERIFY(m_manager->lockIsHeld());
        m_manager->stop();
        StandInLoginManager next;
        QVERIFY(next.start(m_bus.address()));
        QTRY_VERIFY(next.lockIsHeld());
        next.sleep();
        QTRY_COMPARE(program.sleeps.size(), 1);
        QTRY_VERIFY(!next.lockIsHeld());
        next.stop(); // and will never say that the system is awake
        QTRY_COMPARE(program.wakes.size(), 1);
        QVERIFY(m_manager->start(m_bus.address()));
        QTRY_VERIFY(m_manager->lockIsHeld());
        QCOMPARE(program.wakes.size(), 1);
    }

    void onlyTheLoginManagerIsBelieved() {
        const Program program;
        QTRY_VERIFY(m_manager->lockIsHeld());
        QCOMPARE(QProcess::execute(u"/usr/bin/dbus-send"_s,
                                   {u"--bus="_s + m_bus.address(), u"--type=signal"_s,
                                    u"/org/freedesktop/login1"_s,
                                    u"org.freedesktop.login1.Manager.PrepareForSleep"_s, u"boolean:true"_s}),
                 0);
        QTest::qWait(quiet);
        QCOMPARE(program.sleeps.size(), 0);
        m_manager->sleep();
        QTRY_COMPARE(program.sleeps.size(), 1);
    }

    void manySleepsAllowedAtOnceLeaveNothingOpen() {
        Program program;
        connect(&program.monitor, &SleepMonitor::aboutToSleep, &program.monitor, &SleepMonitor::allowSleep);
        QTRY_VERIFY(m_manager->lockIsHeld());
        const qsizetype before = openDescriptors();
        for (int count = 1; count <= 500; ++count) {
            m_manager->sleep();
            QVERIFY(soon([this] { return !m_manager->lockIsHeld(); }));
            m_manager->wake();
            QVERIFY(soon([this] { return m_manager->lockIsHeld(); }));
        }
        QCOMPARE(program.sleeps.size(), 500);
        QCOMPARE(program.wakes.size(), 500);
        QTRY_VERIFY(openDescriptors() <= before); // fewer: an earlier test closes in the background
    }
};

QTEST_GUILESS_MAIN(TestSleep)
#include "tst_sleep.moc"
