#pragma once

#include "Mounting/SSHFSMounter.h"
#include "System/Tables/MountTable.h"
#include "sandbox/Sandbox.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "sandbox/ssh/SlowLine.h"
#include "support/Await.h"
#include "support/Leftovers.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/// Returns scripted results for some commands, lets one command hang, and runs all others for real.
class ScriptedShell : public Shell {
  public:
    QHash<QString, ShellResult> answers; ///< by executable and arguments
    QStringList calls;
    QString hanging; ///< this executable is replaced by one that does not end

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds limit) override {
        const QString call = executable + QLatin1Char(' ') + arguments.join(QLatin1Char(' '));
        calls.append(call);
        for (auto answer = answers.cbegin(); answer != answers.cend(); ++answer) {
            if (call.startsWith(answer.key()))
                co_return answer.value();
        }
        if (executable == hanging) {
            executable = QStringLiteral("/bin/sleep");
            arguments = QStringList{QStringLiteral("60")};
        }
        co_return co_await Shell::run(executable, arguments, limit);
    }
};

/// A mounter with real sshfs against a real sshd. After each test no process and no mount may be left.
class MounterFixture : public QObject {
    Q_OBJECT

  protected:
    std::unique_ptr<QTemporaryDir> m_home;
    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QByteArray m_searchPath;
    std::unique_ptr<ScriptedShell> m_shell;
    std::unique_ptr<SSHFSMounter> m_mounter;
    std::unique_ptr<sandbox::SlowLine> m_line; ///< where a test has asked for one

    void useLine(const sandbox::SlowLine::Quality& quality = {}) {
        m_line = std::make_unique<sandbox::SlowLine>(m_platform->ssh().port());
        m_line->setQuality(quality);
        m_platform->ssh().letClientsUse(m_line->port());
    }

    [[nodiscard]] sandbox::HostedProject hosted(int index) const {
        return m_platform->people().at(0).projects.at(index);
    }

    [[nodiscard]] Project project(int index) const {
        const sandbox::HostedProject hosted = this->hosted(index);
        return {hosted.domain, hosted.name, QString::number(hosted.webspaceID),
                sandbox::mountedFolder(m_platform->treeRoot(), hosted),
                hosted.isSshType ? ProjectType::ssh : ProjectType::harvellon};
    }

    [[nodiscard]] QString mountPoint(int index) const {
        return m_home->path() + QStringLiteral("/Harvellon/") + hosted(index).domain;
    }

    [[nodiscard]] QString domain() const { return hosted(0).domain; }

    [[nodiscard]] QString onServer(const QString& name) const {
        return project(0).path + QStringLiteral("/web/") + name;
    }

    [[nodiscard]] QString mounted(const QString& name) const {
        return mountPoint(0) + QStringLiteral("/web/") + name;
    }

    [[nodiscard]] HostSystem host() const {
        HostSystem host = HostSystem::linuxDesktop(m_home->path());
        host.privateFolder = m_home->filePath(QStringLiteral("private folder"));
        return host;
    }

    /// Long enough for a busy machine, short where a test waits for a limit to pass.
    static MountLimits limits() {
        MountLimits limits;
        using std::chrono::milliseconds;
        limits.startInterval = milliseconds(40);
        limits.unmount = {milliseconds(600), milliseconds(600), milliseconds(200), true, milliseconds(1500)};
        limits.sleep = {milliseconds(600), milliseconds(600), milliseconds(200), false, milliseconds(0)};
        return limits;
    }

    [[nodiscard]] std::unique_ptr<SSHFSMounter>
    mounter(const HostSystem& host, const MountLimits& limits = MounterFixture::limits()) {
        return std::make_unique<SSHFSMounter>(host, *m_shell, limits);
    }

    QString mountFailure(const Project& project) {
        try {
            await(m_mounter->mount(project));
            return QStringLiteral("none");
        } catch (const Failure& error) {
            return error.description();
        }
    }

    /// Most tests need one mount: that of the first project.
    void mountFirst() { QCOMPARE(mountFailure(project(0)), QStringLiteral("none")); }

    UnmountResult unmountFirst() { return await(m_mounter->unmount(domain())); }

    void loseFirst() {
        for (const pid_t pid : processesWith(mountPoint(0)))
            ::kill(pid, SIGKILL);
        QTRY_VERIFY(!MountTable::lists(mountPoint(0)));
    }

    QString unmountFailure(const QString& domain) {
        try {
            await(m_mounter->unmount(domain));
            return QStringLiteral("none");
        } catch (const MounterError& error) {
            return error.description();
        }
    }

    /// Looks at the mode of the folder, because the tests may run as root.
    static bool nobodyCanSaveInto(const QString& folder) {
        constexpr QFile::Permissions saving = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
        constexpr QFile::Permissions reaching = QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther;
        return QFileInfo::exists(folder) && !(QFile::permissions(folder) & (saving | reaching));
    }

    void verifyNothingLeft() {
        QTRY_COMPARE(processesWith(m_home->path()),
                     QList<pid_t>()); // each ssh has its list of known hosts there
        for (int i = 0; i < 12; ++i)
            QVERIFY2(!MountTable::lists(mountPoint(i)), qPrintable(mountPoint(i)));
        QTRY_COMPARE(blockedThreads(), 0);
        QVERIFY(m_mounter->sessions().isEmpty());
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        QVERIFY(m_platform->hasSsh());
        m_searchPath = qgetenv("PATH");
        qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + m_searchPath);
    }

    void init() {
        m_home = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/mounter home XXXXXX"));
        m_shell = std::make_unique<ScriptedShell>();
        m_mounter = mounter(host());
    }

    void cleanup() {
        m_platform->ssh().thaw();
        m_platform->ssh().acceptKey(true);
        await(m_mounter->unmountAll());
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        m_line.reset();
        verifyNothingLeft();
    }

    void cleanupTestCase() {
        QTest::qWait(200); // let the last commands end and their objects be deleted
        m_platform.reset();
        qputenv("PATH", m_searchPath);
    }
};
