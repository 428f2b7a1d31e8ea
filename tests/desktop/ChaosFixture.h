#pragma once

#include "DesktopFixture.h"

#include "System/Tables/MountTable.h"
#include "sandbox/ssh/SlowLine.h"
#include "support/Leftovers.h"
#include "support/PrivateBus.h"
#include "support/StandInLoginManager.h"

#include <QRandomGenerator>

using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;
using namespace Qt::StringLiterals;

/// A desktop with twenty projects, and steps in which its parts fail.
class ChaosFixture : public QObject {
    Q_OBJECT

  protected:
    static constexpr int projects = 20;

    struct Step {
        const char* name;
        std::function<void()> play;
        QString message;      ///< part of the one error in the log; empty where nothing goes wrong
        bool mayFail = false; ///< any error is allowed, or none: the outcome depends on timing
    };

    QTemporaryDir m_platformFolder;
    QTemporaryDir m_tools; ///< where the program looks for sshfs
    std::unique_ptr<sandbox::Sandbox> m_platform;
    PrivateBus m_bus;
    StandInLoginManager m_loginManager;
    std::unique_ptr<DesktopFixture> m_desktop;
    QRandomGenerator m_random;

    AppState& state() { return *m_desktop->state; }

    [[nodiscard]] QString mountPoint(const Project& project) const {
        return m_desktop->host.mountRoot() + u'/' + project.domain;
    }

    Project anyProject() { return state().projects().at(m_random.bounded(projects)); }

    QStringList errors() {
        QStringList told;
        for (const ActivityLogEntry& entry : state().activityLog()->entries()) {
            if (entry.level == ActivityLogLevel::error)
                told.append(entry.message);
        }
        return told;
    }

    [[nodiscard]] QString sshfs() const { return m_tools.filePath(u"sshfs"_s); }

    void install(const QString& program) {
        QFile::remove(sshfs());
        QVERIFY(program.isEmpty() || QFile::link(program, sshfs()));
    }

    void refreshWith(Endpoint endpoint, const Fault& fault) {
        m_platform->setFault(endpoint, fault);
        await(state().parts().loading.refresh());
        QVERIFY(state().lastError());
        QVERIFY(state().projects().isEmpty());
        m_platform->setFault(endpoint, {});
        await(state().parts().loading.refresh());
        QCOMPARE(state().projects().size(), projects);
    }

    Step answer(const char* name, const Fault& fault, const QString& told) {
        return {name, [this, fault] { refreshWith(Endpoint::directory, fault); }, told};
    }

    static Fault fault(int status, const QByteArray& body, qint64 padding = 0, bool cut = false) {
        Fault fault;
        fault.status = status;
        fault.body = body;
        fault.padding = padding;
        fault.cut = cut;
        return fault;
    }

    void connectTo(const Project& project) {
        await(state().parts().connections.connect(project));
        QVERIFY(MountTable::lists(mountPoint(project)));
    }

    void disconnectFrom(const Project& project) {
        await(state().parts().connections.disconnect(project.domain, false));
        QVERIFY(!MountTable::lists(mountPoint(project)));
    }

    void withServerStopped(const std::function<void()>& work) {
        m_platform->ssh().stop();
        work();
        m_platform->ssh().start();
    }

    /// Runs `work` with a project that is mounted over a line of its own.
    void overLine(const std::function<void(const Project& project, sandbox::SlowLine& line)>& work) {
        sandbox::SlowLine line(m_platform->ssh().port());
        m_platform->ssh().letClientsUse(line.port());
        const Project project = anyProject();
        connectTo(project);
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        work(project, line);
    }

    static void startWriting(QProcess& writer, const QString& file, int blocks) {
        writer.start(u"/usr/bin/dd"_s,
                     {u"if=/dev/zero"_s, u"of="_s + file, u"bs=64k"_s, u"count=%1"_s.arg(blocks)});
    }

    void verifyNothingLeft(const Step& step) {
        QVERIFY(!state().isLoading());
        QVERIFY(state().connectedDomains().isEmpty());
        for (const QString& path : MountTable::mountPoints())
            QVERIFY2(!path.startsWith(m_desktop->host.mountRoot()), qPrintable(path));
        QTRY_COMPARE(processesWith(m_desktop->host.mountRoot()), QList<pid_t>());
        QTRY_COMPARE(blockedThreads(), 0);
        const QStringList logged = errors();
        if (step.mayFail)
            return;
        if (step.message.isEmpty())
            QVERIFY2(logged.isEmpty(), qPrintable(logged.join(u'\n')));
        else
            QVERIFY2(logged.size() == 1 && logged.first().contains(step.message),
                     qPrintable(logged.join(u'\n')));
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform =
            std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), projects, true});
        QVERIFY(m_platform->hasSsh());
        qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
        install(u"/usr/bin/sshfs"_s);
        m_bus.start();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
        QVERIFY(m_loginManager.start(m_bus.address()));
        m_desktop = std::make_unique<DesktopFixture>(m_platform->server(), sshfs());
        m_desktop->signIn("erika");
        m_desktop->openPanel();
        QCOMPARE(state().projects().size(), projects);
    }

    void cleanupTestCase() { m_desktop.reset(); }
};
