#pragma once

#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

/// One ssh connection of our own for each mounted server (a "master"), over which short calls save the time
/// of a new one. A call that finds no master, or one that does not answer, is made by its caller in its own
/// way.
///
///     open ──▶ ssh -M in the background ──▶ calls ──▶ idle for 60 s: ssh ends by itself; the next call
///               │                            │         goes its own way and opens another beside it
///               └─ failed: nobody is told    └─ no answer in 2 s, or refused: stopped, and another opened
///     release, close ──▶ stopped
///
/// A master that is stopped takes no further calls and ends with the last that runs over it: a user's shell
/// is never cut off. A login is "user@server". Main thread.
class SharedConnections : public QObject {
    Q_OBJECT

  public:
    /// `shell` outlives this.
    SharedConnections(const HostSystem& host, Shell& shell) : m_host(host), m_shell(shell) {}

    /// From now on calls to `login` may be shared. Connects in the background and never fails.
    void open(const QString& login);
    /// From now on calls to `login` go their own way.
    void release(const QString& login);
    /// Releases all; afterwards nothing opens any more. Done within two seconds.
    QCoro::Task<> close();

    /// Whether `close` would have nothing to do.
    [[nodiscard]] bool isIdle() const { return m_wanted.isEmpty() && m_working.isEmpty(); }

    /// Runs a short command on the server over the master. Nothing, after two seconds at most, where no
    /// master of ours does it; nothing at once where `login` is not open.
    QCoro::Task<std::optional<ShellResult>> run(QString login, QStringList command);

    /// The arguments that lead ssh over the master, which has just answered. Empty, after two seconds at
    /// most, where none does. Should the master end before it is used, ssh connects by itself.
    QCoro::Task<QStringList> answering(QString login);

  Q_SIGNALS:
    /// All masters are as they shall be.
    void settled();

  private:
    [[nodiscard]] std::optional<QString> socketFor(const QString& login) const;
    void replace(const QString& login);
    QCoro::Task<> settle(QString login);
    QCoro::Task<> work(QString login);
    QCoro::Task<bool> ssh(QStringList arguments, std::chrono::milliseconds limit);

    const HostSystem m_host;
    Shell& m_shell;
    bool m_closed = false;
    QSet<QString> m_wanted;
    QSet<QString> m_opened;  ///< by this object, in a folder that was found safe
    QSet<QString> m_working; ///< a master is being opened or stopped
    QSet<QString> m_changed; ///< while that was going on
};
