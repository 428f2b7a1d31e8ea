#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A message bus for one test. It can be ended and started again at the same address. Main thread.
class PrivateBus {
  public:
    PrivateBus() = default;

    ~PrivateBus() { stop(); }
    Q_DISABLE_COPY_MOVE(PrivateBus)

    [[nodiscard]] QString address() const { return QStringLiteral("unix:path=") + socket(); }

    void start() {
        if (m_daemon.state() != QProcess::NotRunning)
            return;
        m_daemon.start(QStringLiteral("/usr/bin/dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"),
                        QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
                        QStringLiteral("--address=") + address()});
        if (!m_daemon.waitForReadyRead()) // the address, printed when it listens
            qFatal("no bus");
    }

    void stop() {
        m_daemon.kill();
        m_daemon.waitForFinished();
        QFile::remove(socket());
    }

  private:
    [[nodiscard]] QString socket() const { return m_folder.filePath(QStringLiteral("bus")); }

    QTemporaryDir m_folder;
    QProcess m_daemon;
};
