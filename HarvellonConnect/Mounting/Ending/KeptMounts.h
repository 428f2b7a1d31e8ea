#pragma once

#include "Mounting/MountSession.h"

#include <QList>
#include <QObject>

/// The mounts that are out of sight while programs still use their files. Each ends with its last file. Main
/// thread.
class KeptMounts : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// `session` must be running.
    void keep(const MountSession& session);

    [[nodiscard]] const QList<MountSession>& sessions() const { return m_sessions; }

    [[nodiscard]] bool contains(const QString& domain) const;

  Q_SIGNALS:
    /// A mount of `domain` is kept no longer. `exitCode` is that of its sshfs.
    void ended(const QString& domain, qint32 exitCode);

  private:
    QList<MountSession> m_sessions;
};
