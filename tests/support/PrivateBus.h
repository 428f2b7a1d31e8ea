#pragma once

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A message bus for one test, which starts no services. It can be ended and started again at the same
/// address. Main thread.
class PrivateBus {
  public:
    PrivateBus() = default;

    ~PrivateBus() { stop(); }
    Q_DISABLE_COPY_MOVE(PrivateBus)

    [[nodiscard]] QString address() const { return QStringLiteral("unix:path=") + socket(); }

    void start() {
        if (m_daemon.state() != QProcess::NotRunning)
            return;
        QFile configuration(m_folder.filePath(QStringLiteral("bus.conf")));
        if (!configuration.open(QIODevice::WriteOnly))
            qFatal("no configuration");
        configuration.write(
            "<busconfig><type>session</type><listen>" + address().toUtf8() +
            "</listen><policy context='default'><allow send_destination='*'/><allow eavesdrop='true'/>"
            "<allow own='*'/></policy></busconfig>");
        configuration.close();
        m_daemon.start(QStringLiteral("/usr/bin/dbus-daemon"),
                       {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                        QStringLiteral("--config-file=") + configuration.fileName()});
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
