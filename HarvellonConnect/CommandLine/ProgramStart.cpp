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
#include <utility>

using namespace std::chrono_literals;

namespace {
constexpr std::chrono::milliseconds startLimit = 20s;
constexpr std::chrono::milliseconds betweenTries = 20ms;
constexpr int notExecuted = 127;

/// The words that exec takes.
class ExecWords {
  public:
    explicit ExecWords(const ProgramStart& start) {
        QStringList words{start.program};
        if (opensBundle(start)) {
            const QString bundle =
                start.program.section(QLatin1Char('/'), 0, -4); // without Contents/MacOS/NAME
            words = QStringList{start.bundleOpener.executable} + start.bundleOpener.argumentsFor(bundle);
        }
        for (const QString& word : std::as_const(words))
            m_texts.append(QFile::encodeName(word));
        for (QByteArray& text : m_texts)
            m_pointers.append(text.data());
        m_pointers.append(nullptr);
    }

    void exec() const { ::execv(m_pointers.first(), m_pointers.constData()); }

    static bool opensBundle(const ProgramStart& start) { return !start.bundleOpener.executable.isEmpty(); }

  private:
    QByteArrayList m_texts;
    QList<char*> m_pointers; ///< into the texts
};

/// Between fork and exec nothing may be allocated.
[[noreturn]] void beProgram(const ExecWords& words) {
    ::setsid();
    if (::chdir("/") != 0) // a program that stands in a mount keeps it busy
        ::_exit(notExecuted);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nothing, stream);
    std::signal(SIGPIPE, SIG_DFL);
    words.exec();
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

RequestClient startProgram(const ProgramStart& start, const QString& socket,
                           const std::function<bool(std::chrono::milliseconds)>& goOn) {
    const ExecWords words(start);
    QElapsedTimer clock;
    clock.start();
    const pid_t child = ::fork();
    if (child == 0)
        beProgram(words);
    std::chrono::milliseconds passed{0};
    while (child > 0 && passed < startLimit && goOn(passed)) {
        if (std::optional<RequestClient> running = RequestClient::to(socket))
            return std::move(*running);
        int status = 0;
        if (::waitpid(child, &status, WNOHANG) == child) {
            if (!ExecWords::opensBundle(start))
                tellEnd(status);
            if (status != 0) // otherwise the opener has started the program
                break;
        }
        ::poll(nullptr, 0, static_cast<int>(betweenTries.count()));
        passed = std::chrono::milliseconds(clock.elapsed());
    }
    throw RequestError(ExitStatus::notReady,
                       QStringLiteral("Harvellon Connect konnte nicht gestartet werden."));
}

void becomeProgram(const ProgramStart& start) {
    ExecWords(start).exec();
}
