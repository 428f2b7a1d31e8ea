#pragma once

#include "Directory/Project.h"

#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

class ActivityReport;
class GuidanceQuestion;
class Connections;
class Preferences;
class SSHFSMounter;

/// Brings connections through sleep, changes of the network and restarts of the program.
///
///     prepareForSleep ──▶ idle mounts detached ──▶ wakeUp ──▶ bringBack
///     networkChanged ──▶ each server asked ──silent──▶ connection made anew, in the same mount
///     askToQuit ──▶ is something being written? ──▶ the user decides
///     startUp ──▶ leftovers of a crash cleared ──▶ bringBack, where the user wants it
///
///     bringBack ──▶ mounted, without an editor
///         └─ not reachable: tried again, later and later, and after each change of the network;
///            after some minutes, or when the server refuses, the row says that the connection is lost
///
/// Main thread.
class ConnectionCare : public QObject {
    Q_OBJECT

  public:
    /// All that is referred to outlives this.
    ConnectionCare(Connections& connections, SSHFSMounter& mounter, Preferences& preferences,
                   ActivityReport& report, GuidanceQuestion& question);

    /// Takes down what an earlier run has left mounted, then mounts again what was mounted when it ended, if
    /// the user wants that. Never fails.
    QCoro::Task<> startUp();

    /// Whether mounts come back after a start of the program. Off until the user says otherwise.
    [[nodiscard]] bool reconnectsAtStart() const { return m_reconnectsAtStart; }

    void setReconnectsAtStart(bool reconnects);

    /// Detaches what is not in use; takes less than two seconds. Never fails.
    QCoro::Task<> prepareForSleep();
    /// Mounts again what `prepareForSleep` has detached, and asks the servers of the rest.
    void wakeUp();
    /// Asks all servers, and gives a new connection to mounts whose server does not answer. Returns at once.
    void networkChanged();

    /// Calls `quit` when nothing is being written to a mount. Otherwise asks the user, who may have it called
    /// when all is written, at once, or not at all.
    QCoro::Task<> askToQuit(std::function<void()> quit);

    /// The program ends: what is mounted now is what the next start brings back.
    void end() { m_ended = true; }

  Q_SIGNALS:
    /// The network may be reachable again.
    void tryAgain();

  private:
    void bringBack(const QList<Project>& projects);
    QCoro::Task<> keepTrying(Project project);
    QCoro::Task<> renewIfSilent(QString domain);
    QCoro::Task<> quitWhenWritten(std::function<void()> quit);
    QCoro::Task<QStringList> writtenDomains();
    void connectionChanged(const QString& domain, bool connected);
    void forget(const QString& domain);
    void remember();

    Connections& m_connections;
    SSHFSMounter& m_mounter;
    Preferences& m_preferences;
    ActivityReport& m_report;
    GuidanceQuestion& m_question;
    bool m_reconnectsAtStart = false;
    bool m_asleep = false;     ///< or about to be
    QList<Project> m_detached; ///< before the system fell asleep
    QSet<QString> m_givenUp;   ///< by the user since then
    QHash<QString, Project> m_comingBack;
    QHash<QString, bool> m_asking; ///< domains whose server is being asked, and whether to ask once more
    int m_quitQuestions = 0;
    bool m_ended = false;
};
