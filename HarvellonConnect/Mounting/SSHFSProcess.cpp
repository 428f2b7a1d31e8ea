#include "Mounting/SSHFSProcess.h"

#include "System/Async.h"
#include "System/Text.h"

#include <csignal>
#include <unistd.h>

namespace {
constexpr qsizetype keptErrors = 8 * 1024;
constexpr std::chrono::seconds killPatience{1}; // after SIGKILL sshfs is gone within some 12 ms
} // namespace

SSHFSProcess::SSHFSProcess() : m_process(new QProcess) {
    m_end.start();
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setChildProcessModifier([] { ::setsid(); });
    connect(m_process, &QProcess::readyReadStandardError, this, &SSHFSProcess::drain);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        m_startFailure = m_process->errorString();
        m_end.finish();
    });
    connect(m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus) {
        drain();
        kill(); // an sshfs that ended politely leaves its ssh waiting for a silent server
        m_end.finish();
        Q_EMIT ended(code); // may be the end of this
    });
}

SSHFSProcess::~SSHFSProcess() {
    m_process->disconnect(this);
    if (isRunning()) // destroying a running QProcess would wait for it
        connect(m_process, &QProcess::finished, m_process, &QObject::deleteLater);
    else
        m_process->deleteLater();
}

void SSHFSProcess::start(const QString& executable, const QStringList& arguments) {
    m_process->start(executable, arguments);
    m_group = m_process->processId();
}

void SSHFSProcess::drain() {
    m_errors.append(m_process->readAllStandardError());
    if (m_errors.size() <= keptErrors)
        return;
    m_errors = m_errors.right(keptErrors);
    m_errors.remove(0, m_errors.indexOf('\n') + 1); // whole lines, whole characters
}

QString SSHFSProcess::errorText() const {
    return strictUtf8(m_errors).value_or(QString()).trimmed();
}

void SSHFSProcess::hangUp() {
    if (m_group > 0 && isRunning())
        ::kill(static_cast<pid_t>(m_group), SIGTERM);
}

void SSHFSProcess::kill() {
    if (m_group > 0)
        ::kill(-static_cast<pid_t>(m_group), SIGKILL);
}

QCoro::Task<> SSHFSProcess::terminate(std::shared_ptr<SSHFSProcess> process,
                                      std::chrono::milliseconds grace) {
    if (!process->isRunning())
        co_return;
    process->hangUp();
    const QFuture<void> end = process->end();
    const bool endedPolitely = co_await Async::finishesWithin(end, grace);
    if (endedPolitely)
        co_return;
    process->kill();
    co_await Async::finishesWithin(end, std::chrono::milliseconds(killPatience));
}
