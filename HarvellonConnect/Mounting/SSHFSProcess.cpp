#include "Mounting/SSHFSProcess.h"

#include "System/Async.h"
#include "System/Text.h"

#include <csignal>
#include <unistd.h>

namespace {
constexpr qsizetype mostErrorBytes = 8 * 1024;
constexpr std::chrono::seconds killLimit{1}; // sshfs ends within about 12 ms of SIGKILL
} // namespace

SSHFSProcess::SSHFSProcess() : m_process(new QProcess) {
    m_end.start();
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->setStandardOutputFile(QProcess::nullDevice());
    m_process->setChildProcessModifier([] { ::setsid(); });
    connect(m_process, &QProcess::readyReadStandardError, this, &SSHFSProcess::readErrors);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        m_startFailure = m_process->errorString();
        m_end.finish();
    });
    connect(m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus) {
        readErrors();
        kill(); // sshfs that ended after SIGTERM may leave its ssh waiting for a silent server
        m_end.finish();
        Q_EMIT ended(code); // last, because a receiver may delete this object
    });
}

SSHFSProcess::~SSHFSProcess() {
    m_process->disconnect(this);
    if (isRunning()) // the destructor of a running QProcess would block until its end
        connect(m_process, &QProcess::finished, m_process, &QObject::deleteLater);
    else
        m_process->deleteLater();
}

void SSHFSProcess::start(const QString& executable, const QStringList& arguments) {
    m_process->start(executable, arguments);
    m_group = m_process->processId();
}

void SSHFSProcess::readErrors() {
    m_errors.append(m_process->readAllStandardError());
    if (m_errors.size() <= mostErrorBytes)
        return;
    m_errors = m_errors.right(mostErrorBytes);
    m_errors.remove(0, m_errors.indexOf('\n') + 1); // cut at a line, so that no UTF-8 character is cut
}

QString SSHFSProcess::errorText() const {
    return strictUtf8(m_errors).value_or(QString()).trimmed();
}

void SSHFSProcess::terminate() {
    if (m_group > 0 && isRunning())
        ::kill(static_cast<pid_t>(m_group), SIGTERM);
}

void SSHFSProcess::kill() {
    if (m_group > 0)
        ::kill(-static_cast<pid_t>(m_group), SIGKILL);
}

QCoro::Task<> SSHFSProcess::stop(std::shared_ptr<SSHFSProcess> process, std::chrono::milliseconds grace) {
    if (!process->isRunning())
        co_return;
    process->terminate();
    const QFuture<void> end = process->end();
    const bool ended = co_await Async::finishesWithin(end, grace);
    if (ended)
        co_return;
    process->kill();
    co_await Async::finishesWithin(end, std::chrono::milliseconds(killLimit));
}
