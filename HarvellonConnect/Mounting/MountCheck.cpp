#include "Mounting/MountCheck.h"

#include "System/Async.h"

#include <QFile>
#include <QtConcurrentRun>

#include <sys/stat.h>

namespace {
bool isOnOtherFileSystemThanParent(const QByteArray& path) {
    const QByteArray parent = path.left(path.lastIndexOf('/'));

    struct stat own {};

    struct stat above {};

    return ::stat(path.constData(), &own) == 0 && ::stat(parent.constData(), &above) == 0 &&
           own.st_dev != above.st_dev;
}
} // namespace

QCoro::Task<std::optional<bool>> MountCheck::isMounted(std::chrono::milliseconds limit) {
    if (!m_running)
        m_running =
            QtConcurrent::run(&Async::workers(), isOnOtherFileSystemThanParent, QFile::encodeName(m_path));
    const QFuture<bool> running = *m_running;
    const bool answered = co_await Async::finishesWithin(running, limit);
    if (!answered)
        co_return std::nullopt;
    m_running.reset();
    co_return running.result();
}
