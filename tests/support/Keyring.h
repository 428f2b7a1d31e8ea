#pragma once

#include "support/PrivateBus.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/// A session bus with a real, unlocked keyring that can die, or stand still as one that waits for its
/// password. Main thread.
class Keyring {
  public:
    Keyring() {
        m_bus.start();
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path()));
        qunsetenv("DISPLAY"); // a keyring that sees one opens a dialog
        start();
    }

    ~Keyring() { kill(); }
    Q_DISABLE_COPY_MOVE(Keyring)

    /// `locked`: what was stored before is not to be had without a password, which nobody can be asked for.
    void start(bool locked = false) {
        QStringList arguments{QStringLiteral("--foreground"), QStringLiteral("--components=secrets")};
        if (!locked)
            arguments.append(QStringLiteral("--unlock"));
        m_daemon.start(QStringLiteral("/usr/bin/gnome-keyring-daemon"), arguments);
        m_daemon.write("test");
        m_daemon.closeWriteChannel();
        const auto answers = [] {
            return QProcess::execute(QStringLiteral("/usr/bin/dbus-send"),
                                     {QStringLiteral("--session"), QStringLiteral("--print-reply=literal"),
                                      QStringLiteral("--dest=org.freedesktop.secrets"), QStringLiteral("/"),
                                      QStringLiteral("org.freedesktop.DBus.Peer.Ping")}) == 0;
        };
        if (!QTest::qWaitFor(answers))
            qFatal("no keyring");
    }

    void kill() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    void freeze() { ::kill(static_cast<pid_t>(m_daemon.processId()), SIGSTOP); }

    void thaw() { ::kill(static_cast<pid_t>(m_daemon.processId()), SIGCONT); }

  private:
    QTemporaryDir m_folder;
    PrivateBus m_bus;
    QProcess m_daemon;
};
