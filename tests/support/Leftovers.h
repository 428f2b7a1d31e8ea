#pragma once

#include <QDir>
#include <QFile>
#include <QList>
#include <QString>

#include <unistd.h>

/// Processes other than this one whose command line holds `text`, and which belong to this run of the tests:
/// another run on the same machine has another home folder.
inline QList<pid_t> processesWith(const QString& text) {
    QList<pid_t> found;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        QFile commandLine(QStringLiteral("/proc/%1/cmdline").arg(entry));
        QFile environment(QStringLiteral("/proc/%1/environ").arg(entry));
        const pid_t pid = entry.toInt();
        if (pid > 0 && pid != getpid() && commandLine.open(QIODevice::ReadOnly) &&
            commandLine.readAll().contains(text.toUtf8()) && environment.open(QIODevice::ReadOnly) &&
            environment.readAll().split('\0').contains("HOME=" + qgetenv("HOME")))
            found.append(pid);
    }
    return found;
}

/// Threads of this process that wait for the answer of a mount.
inline int blockedThreads() {
    int blocked = 0;
    const QStringList threads =
        QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& thread : threads) {
        QFile channel(QStringLiteral("/proc/self/task/%1/wchan").arg(thread));
        if (channel.open(QIODevice::ReadOnly) &&
            QByteArrayList{"request_wait_answer", "fuse_get_req"}.contains(channel.readAll()))
            ++blocked;
    }
    return blocked;
}
