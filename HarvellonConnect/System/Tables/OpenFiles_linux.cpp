#include "System/Tables/OpenFiles.h"

#include <QByteArray>
#include <QFile>

#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <unistd.h>

namespace {
/// Calls `visitor` for each entry until it returns true; whether one did.
bool anyEntry(const QByteArray& folder, const std::function<bool(const QByteArray& name)>& visitor) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.constData()), &::closedir);
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        if (entry->d_name[0] != '.' && visitor(entry->d_name))
            return true;
    }
    return false;
}

/// Reading the link does not access the file itself, whose server may be silent.
QByteArray targetOf(const QByteArray& link) {
    std::array<char, 4096> target{};
    const ssize_t length = ::readlink(link.constData(), target.data(), target.size());
    return {target.data(), length < 0 ? 0 : static_cast<qsizetype>(length)};
}

bool isWritable(const QByteArray& process, const QByteArray& descriptor) {
    QFile info(QString::fromLatin1(process + "/fdinfo/" + descriptor));
    if (!info.open(QIODevice::ReadOnly))
        return false;
    constexpr qsizetype labelLength = 6; // of "flags:"
    for (const QByteArray& line : info.readAll().split('\n')) {
        if (line.startsWith("flags:"))
            return (line.mid(labelLength).trimmed().toInt(nullptr, 8) & O_ACCMODE) != O_RDONLY;
    }
    return false;
}
} // namespace

bool OpenFiles::anyWrittenBelow(const QString& folder) {
    const QByteArray prefix = QFile::encodeName(folder) + '/';
    return anyEntry("/proc", [&prefix](const QByteArray& name) {
        if (name.toInt() <= 0)
            return false;
        const QByteArray process = "/proc/" + name;
        return anyEntry(process + "/fd", [&](const QByteArray& descriptor) {
            return targetOf(process + "/fd/" + descriptor).startsWith(prefix) &&
                   isWritable(process, descriptor);
        });
    });
}
