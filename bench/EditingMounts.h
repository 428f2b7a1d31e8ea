#pragma once

#include "Mounting/SSHFSMounter.h"

#include <QElapsedTimer>
#include <QProcess>

/// The two ways to a project that are compared. Each connects and disconnects again and again; what sshfs and
/// the kernel remember ends with the connection. Main thread, which they block.
class EditingMount {
  public:
    virtual ~EditingMount() = default;

    /// Yields the milliseconds until the project can be listed. Throws when that is impossible.
    virtual double connect() = 0;
    virtual void disconnect() = 0;
    [[nodiscard]] virtual QString root() const = 0;
    /// The process id of sshfs.
    [[nodiscard]] virtual qint64 process() const = 0;
    /// Waits until nothing is read ahead any more, which must be before `limit` has passed since `connect`.
    virtual void settle(std::chrono::milliseconds limit) = 0;
};

/// As the program mounts.
class OwnMount : public EditingMount {
  public:
    OwnMount(const HostSystem& host, Project project)
        : m_project(std::move(project)), m_mounter(host, m_shell) {}

    double connect() override;
    void disconnect() override;

    [[nodiscard]] QString root() const override { return *m_mounter.mountPoint(m_project.domain); }

    [[nodiscard]] qint64 process() const override;
    void settle(std::chrono::milliseconds limit) override;

  private:
    const Project m_project;
    Shell m_shell;
    SSHFSMounter m_mounter;
    QElapsedTimer m_connected;
};

/// sshfs as somebody starts it who knows the options for a connection that lasts, and no others.
class BareMount : public EditingMount {
  public:
    BareMount(const HostSystem& host, Project project);

    ~BareMount() override { disconnect(); }
    Q_DISABLE_COPY_MOVE(BareMount)

    double connect() override;
    void disconnect() override;

    [[nodiscard]] QString root() const override { return m_mountPoint; }

    [[nodiscard]] qint64 process() const override { return m_sshfs.processId(); }

    void settle(std::chrono::milliseconds) override {}

  private:
    const QString m_mountPoint;
    const QStringList m_arguments;
    QProcess m_sshfs;
};
