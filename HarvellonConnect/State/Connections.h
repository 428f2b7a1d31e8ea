#pragma once

#include "Actions/VSCodeLauncher.h"
#include "Directory/Project.h"
#include "Mounting/MountSession.h"
#include "System/Reporter.h"

#include <QCoroTask>
#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

struct Guidance;
class SSHFSMounter;

/// Connects and disconnects projects, for the user: with log, last error, guidance and editor. Main
/// thread.
class Connections : public QObject {
    Q_OBJECT

  public:
    using ShowGuidance = std::function<void(const Guidance& guidance)>;

    /// All that is referred to outlives this.
    Connections(const HostSystem& host, Shell& shell, Reporter& report, SSHFSMounter& mounter,
                VSCodeLauncher& editor, ShowGuidance showGuidance);

    /// Mounts the project and opens its document folder in the editor. Does nothing while it is mounted or
    /// being mounted. Never fails: every outcome is published and logged.
    QCoro::Task<> connect(Project project);
    /// Takes the mount of `domain` down. `force` changes the log line alone. Never fails.
    QCoro::Task<> disconnect(QString domain, bool force);
    /// Takes down what an earlier run of the program has left mounted. Never fails.
    QCoro::Task<> clearLeftBehind();
    /// Takes every mount down; nothing is mounted afterwards. Done within five seconds.
    QCoro::Task<> disconnectAll();

    /// The domains of the mounter's sessions, as last published: after each connect, disconnect and
    /// unexpected end. A disconnect that fails publishes nothing.
    [[nodiscard]] const QSet<QString>& connectedDomains() const { return m_connectedDomains; }

    /// Since when a connect of `domain` has been under way.
    [[nodiscard]] std::optional<QDateTime> connectingSince(const QString& domain) const;

  Q_SIGNALS:
    /// A connect of `domain` has begun or ended.
    void connectingChanged(const QString& domain);
    /// `domain` has been mounted, or its mount has ended.
    void connectionChanged(const QString& domain, bool connected);
    /// The mount of `domain` ended by itself.
    void mountEnded(const QString& domain);

  private:
    QCoro::Task<Ending> mount(Project project);
    QCoro::Task<Ending> unmount(QString domain, UnmountResult& result);
    void warnAbout(UnmountResult result, const QString& domain);
    QCoro::Task<> clearLeftBehind(QString domain);
    void endedByItself(const QString& domain, qint32 exitCode);
    void publishSessions();

    const HostSystem& m_host;
    Shell& m_shell;
    Reporter& m_report;
    SSHFSMounter& m_mounter;
    VSCodeLauncher& m_editor;
    ShowGuidance m_showGuidance;
    QHash<QString, QDateTime> m_connecting;
    QSet<QString> m_connectedDomains;
};
