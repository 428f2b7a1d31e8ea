#include "System/Tables/ProcessGroup.h"

#include <QByteArray>
#include <QFile>
#include <QSet>
#include <QString>

#include <algorithm>
#include <array>
#include <dirent.h>
#include <memory>
#include <unistd.h>

namespace {
QByteArray contentOf(qint64 process, const char* name) {
    QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The numbers of the sockets that a process has open.
QSet<QByteArray> socketsOf(qint64 process) {
    QSet<QByteArray> sockets;
    const QByteArray folder = "/proc/" + QByteArray::number(process) + "/fd/";
    const std::unique_ptr<DIR, int (*)(DIR*)> descriptors(::opendir(folder.constData()), &::closedir);
    while (const dirent* entry = descriptors ? ::readdir(descriptors.get()) : nullptr) {
        std::array<char, 64> target{};
        const ssize_t length = ::readlink((folder + entry->d_name).constData(), target.data(), target.size());
        const QByteArray name(target.data(), std::max<ssize_t>(length, 0));
        if (name.startsWith("socket:["))
            sockets.insert(name.mid(name.indexOf('[') + 1).chopped(1));
    }
    return sockets;
}

/// The send queues of those sockets that the kernel's table lists.
quint64 unsentBytes(const char* table, const QSet<QByteArray>& sockets) {
    constexpr qsizetype queuesField = 4;
    constexpr qsizetype socketField = 9;
    quint64 bytes = 0;
    QFile file(QString::fromLatin1(table));
    if (!file.open(QIODevice::ReadOnly))
        return bytes;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (sockets.contains(fields.value(socketField)))
            bytes += fields.at(queuesField).split(':').first().toULongLong(nullptr, 16);
    }
    return bytes;
}

qint64 groupOf(qint64 process) {
    const QByteArray status = contentOf(process, "stat");
    // The program's name stands in brackets and may hold anything. Behind it: state, parent, group.
    const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
    return fields.value(2).toLongLong();
}
} // namespace

QList<qint64> ProcessGroup::members(qint64 group) {
    QList<qint64> found;
    const std::unique_ptr<DIR, int (*)(DIR*)> processes(::opendir("/proc"), &::closedir);
    while (const dirent* entry = processes ? ::readdir(processes.get()) : nullptr) {
        const qint64 process = QByteArray(entry->d_name).toLongLong();
        if (process > 0 && process != group && groupOf(process) == group)
            found.append(process);
    }
    return found;
}

std::optional<ProcessGroup::Traffic> ProcessGroup::traffic(qint64 group) {
    Traffic traffic;
    QSet<QByteArray> sockets;
    for (const qint64 process : members(group)) {
        for (const QByteArray& line : contentOf(process, "io").split('\n')) {
            if (line.startsWith("rchar:") || line.startsWith("wchar:"))
                traffic.bytes += line.mid(line.indexOf(':') + 1).trimmed().toULongLong();
        }
        sockets += socketsOf(process);
    }
    if (!sockets.isEmpty())
        traffic.unsent = unsentBytes("/proc/net/tcp", sockets) + unsentBytes("/proc/net/tcp6", sockets);
    return traffic;
}
