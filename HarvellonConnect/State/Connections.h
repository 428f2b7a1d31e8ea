#pragma once

#include "Actions/ActionContext.h"
#include "Directory/Project.h"
#include "Mounting/MountOptions.h"
#include "Mounting/MountSession.h"
#include "System/Reporter.h"

#include <QCoroTask>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>

struct Guidance;
class Preferences;
class SSHFSMounter;

/// Connects and disconnects projects, for the user: with log, last error, guidance and editor. Main
/// thread.
class Connections : public QObject {
    Q_OBJECT

  public:
    using ShowGuidance = std::function<void(const Guidance& guidance)>;

    /// All that is referred to outlives this.
    Connections(const ActionContext& context, SSHFSMounter& mounter, Preferences& preferences,
                ShowGuidance showGuidance);

    /// Mounts the project and opens its document folder in the editor. Does nothing while it is mounted or
    /// being mounted. Never fails: every outcome is published and logged.
    QCoro::Task<> connect(Project project);
    /// The same, without opening it.
    QCoro::Task<> connectOnly(Project project);

    enum class Reconnected {
        yes,
        notYet, ///< the server could not be reached
        refused ///< trying again would end in the same way
    };

    /// Mounts the project again, without opening it. Logs success only.
    QCoro::Task<Reconnected> reconnect(Project project);
    /// Shows the project's row as one whose mount has ended by itself, until it is connected or disconnected.
    void markLost(const Project& project);
    /// Publishes what is mounted now, after the mounter was used directly.
    void publishSessions();
    /// Offers to let the server follow the project's symbolic links; the answer is remembered.
    QCoro::Task<> offerLinks(Project project);
    /// Takes the mount of `domain` down. `force` changes the log line alone. Never fails.
    QCoro::Task<> disconnect(QString domain, bool force);
    /// Takes down what an earlier run of the program has left mounted. Never fails.
    QCoro::Task<> clearLeftBehind();
    /// Takes every mount down; nothing is mounted afterwards. Done within five seconds.
    QCoro::Task<> disconnectAll();

    /// The domains of the mounter's sessions, as last published: after each connect, disconnect and
    /// unexpected end. A disconnect that fails publishes nothing.
    [[nodiscard]] const QSet<QString>& connectedDomains() const { return m_connectedDomains; }

    /// The mounted projects, and those whose mount has ended by itself and has not been dealt with, by
    /// domain.
    [[nodiscard]] QList<Project> keptProjects() const;

    [[nodiscard]] bool isLost(const QString& domain) const { return m_lost.contains(domain); }

    /// Since when a connect of `domain` has been under way.
    [[nodiscard]] std::optional<QDateTime> connectingSince(const QString& domain) const;

    [[nodiscard]] QStringList connectingDomains() const { return m_connecting.keys(); }

  Q_SIGNALS:
    /// A connect of `domain` has begun or ended.
    void connectingChanged(const QString& domain);
    /// The server did not let the project in; `failure` will be the last error.
    void refused(const Project& project, const QString& failure);
    /// `domain` has been mounted, or its mount has ended.
    void connectionChanged(const QString& domain, bool connected);
    /// The user does not want `domain` mounted any more.
    void givenUp(const QString& domain);
    /// `domain` has been mounted, and what was to be opened in it has been found: a further question about it
    /// delays nobody.
    void handedOver(const QString& domain);
    /// These mounts ended by themselves, shortly one after the other.
    void mountsEnded(const QStringList& domains);

  private:
    QCoro::Task<QString> mountFor(Project project);
    QCoro::Task<Ending> mount(Project project);
    QCoro::Task<Ending> unmount(QString domain, UnmountResult& result);
    void warnAbout(UnmountResult result, const QString& domain);
    QCoro::Task<> clearLeftBehind(QString domain);
    void endedByItself(const QString& domain, qint32 exitCode);

    const ActionContext& m_context;
    Reporter& m_report;
    SSHFSMounter& m_mounter;
    Preferences& m_preferences;
    ShowGuidance m_showGuidance;
    [[nodiscard]] Links linksOf(const QString& domain) const;
    void followLinks(const Project& project);
    QCoro::Task<> followLinksAnew(Project project);
    void setLost(const Project& project, bool lost);

    QHash<QString, QDateTime> m_connecting;
    QHash<QString, Project> m_lost;
    QStringList m_untold; ///< ended by themselves, and the user has not been told yet
    QTimer m_tellEnded;
    QSet<QString> m_connectedDomains;
    QHash<QString, Project> m_mounted; ///< of m_connectedDomains
};
