#include "Mounting/MountQuestion.h"

#include "System/Async.h"

#include <QFile>

#include <sys/stat.h>

namespace {
bool isMounted(const QByteArray& path) {
    const QByteArray parent = path.left(path.lastIndexOf('/'));

    struct stat own {};

    struct stat above {};

    return ::stat(path.constData(), &own) == 0 && ::stat(parent.constData(), &above) == 0 &&
           own.st_dev != above.st_dev;
}

QFuture<bool> ask(const QString& path) {
    auto promise = std::make_shared<QPromise<bool>>();
    promise->start();
    QFuture<bool> asked = promise->future();
    Async::workers().start([promise, path = QFile::encodeName(path)] {
        promise->addResult(isMounted(path));
        promise->finish();
    });
    return asked;
}
} // namespace

QCoro::Task<std::optional<bool>> MountQuestion::answer(std::chrono::milliseconds limit) {
    if (!m_pending)
        m_pending = ask(m_path);
    const QFuture<bool> pending = *m_pending;
    const bool answered = co_await Async::finishesWithin(pending, limit);
    if (!answered)
        co_return std::nullopt;
    m_pending.reset();
    co_return pending.result();
}
