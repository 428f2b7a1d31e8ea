#pragma once

#include "Directory/Project.h"

#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

class ActivityReport;
class Connections;
class Preferences;
class SSHFSMounter;

/// Brings connections through sleep, changes of the network and restarts of the program.
///
///     prepareForSleep ──▶ idle mounts detached ──▶ wakeUp ──▶ bringBack
///     networkChanged ──▶ each server asked ──silent──▶ connection made anew, in the same mount
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
                   ActivityReport& report);

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
    /// Gives a new connection to mounts whose server does not answer any more. Never fails.
    QCoro::Task<> networkChanged();

    /// The program ends: what is mounted now is what the next start brings back.
    void end() { m_ended = true; }

  Q_SIGNALS:
    /// The network may be reachable again.
    void tryAgain();

  private:
    QCoro::Task<> bringBack(Project project);
    void remember();

    Connections& m_connections;
    SSHFSMounter& m_mounter;
    Preferences& m_preferences;
    ActivityReport& m_report;
    bool m_reconnectsAtStart = false;
    QList<Project> m_detached; ///< before the system fell asleep
    QHash<QString, Project> m_comingBack;
    bool m_asking = false;
    bool m_askAgain = false;
    bool m_ended = false;
};
