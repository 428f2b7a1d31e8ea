#include "Mounting/MountQuestions.h"

#include "System/Async.h"

#include <QFile>
#include <QRandomGenerator>
#include <QtConcurrentRun>

#include <cerrno>
#include <sys/stat.h>

namespace {
bool isOnOtherFileSystemThanParent(const QByteArray& path) {
    const QByteArray parent = path.left(path.lastIndexOf('/'));

    struct stat own {};

    struct stat above {};

    return ::stat(path.constData(), &own) == 0 && ::stat(parent.constData(), &above) == 0 &&
           own.st_dev != above.st_dev;
}

bool isAnswered(const QByteArray& path) {
    struct stat status {};

    // ENOTCONN: sshfs has gone. EIO: sshfs has lost the server and cannot reach it again.
    return ::lstat(path.constData(), &status) == 0 || (errno != ENOTCONN && errno != EIO);
}
} // namespace

QFuture<bool> MountQuestions::ask(const std::function<bool()>& question) {
    m_last = m_last.isFinished() ? QtConcurrent::run(&Async::workers(), question)
                                 : m_last.then(&Async::workers(), [question](bool) { return question(); });
    return m_last;
}

QFuture<bool> MountQuestions::askOnce(QFuture<bool>& running, const std::function<bool()>& question) {
    if (running.isFinished())
        running = ask(question);
    return running;
}

QFuture<bool> MountQuestions::isMounted() {
    return askOnce(m_isMounted,
                   [path = QFile::encodeName(m_mountPoint)] { return isOnOtherFileSystemThanParent(path); });
}

QFuture<bool> MountQuestions::serverAnswers() {
    const QString unknown =
        QStringLiteral("/.harvellon-%1").arg(QRandomGenerator::global()->generate64(), 0, 16);
    return askOnce(m_serverAnswers,
                   [path = QFile::encodeName(m_mountPoint + unknown)] { return isAnswered(path); });
}
