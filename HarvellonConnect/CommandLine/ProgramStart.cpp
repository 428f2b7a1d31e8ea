#include "CommandLine/ProgramStart.h"

#include <QElapsedTimer>
#include <QFile>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds startLimit = 20s;
constexpr std::chrono::milliseconds betweenTries = 20ms;
constexpr int notExecuted = 127;

/// Between fork and exec nothing may be allocated.
[[noreturn]] void beProgram(const char* path) {
    ::setsid();
    if (::chdir("/") != 0) // a program that stands in a mount keeps it busy
        ::_exit(notExecuted);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing, stream);
    std::signal(SIGPIPE, SIG_DFL);
    ::execl(path, path, nullptr);
    ::_exit(notExecuted);
}

[[noreturn]] void tellEnd(int status) {
    QString reason = QStringLiteral("Harvellon Connect konnte nicht gestartet werden.");
    if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS)
        reason = QStringLiteral("Das laufende Harvellon Connect antwortet nicht. Bitte neu starten.");
    else if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_FAILURE)
        reason = QStringLiteral("Harvellon Connect braucht einen grafischen Desktop.");
    throw RequestError(ExitStatus::notReady, reason);
}
} // namespace

RequestClient startProgram(const QString& program, const QString& socket,
                           const std::function<bool(std::chrono::milliseconds)>& goOn) {
    const QByteArray path = QFile::encodeName(program);
    QElapsedTimer clock;
    clock.start();
    const pid_t child = ::fork();
    if (child == 0)
        beProgram(path.constData());
    std::chrono::milliseconds passed{0};
    while (child > 0 && passed < startLimit && goOn(passed)) {
        if (std::optional<RequestClient> running = RequestClient::to(socket))
            return std::move(*running);
        int status = 0;
        if (::waitpid(child, &status, WNOHANG) == child)
            tellEnd(status);
        ::poll(nullptr, 0, static_cast<int>(betweenTries.count()));
        passed = std::chrono::milliseconds(clock.elapsed());
    }
    throw RequestError(ExitStatus::notReady,
                       QStringLiteral("Harvellon Connect konnte nicht gestartet werden."));
}

void becomeProgram(const QString& program) {
    const QByteArray path = QFile::encodeName(program);
    ::execl(path.constData(), path.constData(), nullptr);
}
