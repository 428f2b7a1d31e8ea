#pragma once

#include "System/Failure.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

/// A tunnel that could not be made, or at whose other end no database answers.
class TunnelError : public TextFailure {
  public:
    using TextFailure::TextFailure;
};

struct TunnelLimits {
    std::chrono::seconds unused{180};        ///< without a connection through it
    std::chrono::milliseconds open{15'000};  ///< until the server has let us in
    std::chrono::milliseconds answer{8'000}; ///< of the database
    quint16 databasePort = 3306;             ///< on the server's own loopback
};

/// Tunnels from a port of this machine's loopback to the database of a server, one for each login
/// ("user@server"). Each has an ssh connection of its own: a large result would hold up the calls over the
/// shared connection, which ends with the mount besides.
///
///     open ──▶ ssh -M in the background ──▶ ssh -O forward ──▶ the database greets ──▶ port
///      │                                                         └─ it does not: ended, TunnelError
///      └─ there is one, and the database greets ──▶ its port
///
/// ssh itself ends a tunnel that nothing has been connected to for `unused`, also after this program was
/// killed; nothing is watched here. A disconnect does not end it: the database needs no mount. Outlives what
/// it has under way. Main thread.
class DatabaseTunnels : public QObject {
    Q_OBJECT

  public:
    /// `shell` outlives this.
    DatabaseTunnels(const HostSystem& host, Shell& shell, TunnelLimits limits = {})
        : m_host(host), m_shell(shell), m_limits(limits) {}

    /// The port of the tunnel to `login`, through which the database has just answered. Throws TunnelError,
    /// and ShellError without ssh.
    QCoro::Task<quint16> open(QString login);
    /// Ends all tunnels; afterwards none is opened any more. Done within two seconds.
    QCoro::Task<> close();

    /// Whether `close` would have nothing to do.
    [[nodiscard]] bool isIdle() const;

  Q_SIGNALS:
    /// A tunnel has been opened, or could not be.
    void settled();

  private:
    [[nodiscard]] std::optional<QString> socketFor(const QString& login) const;
    QCoro::Task<quint16> openAlone(QString login);
    QCoro::Task<bool> stillLeads(QString login, QString socket);
    QCoro::Task<quint16> forward(QString login, QString socket);
    QCoro::Task<> expectDatabase(QString login, quint16 port);
    QCoro::Task<ShellResult> control(QString login, QString socket, QStringList request);
    QCoro::Task<> end(QString login, QString socket);

    const HostSystem m_host;
    Shell& m_shell;
    const TunnelLimits m_limits;
    bool m_closed = false;
    QSet<QString> m_opening;
    QHash<QString, quint16> m_ports; ///< also of tunnels that have ended: their clients know the port
};
