#include "CommandLine/Terminal.h"

#include "System/Text.h"

#include <QStringList>

#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {
volatile std::sig_atomic_t interrupts = 0;

void interrupt(int) {
    interrupts = 1;
}

void write(const QString& text, std::FILE* stream) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}
} // namespace

Terminal::Terminal() : m_isTerminal(::isatty(STDERR_FILENO) == 1) {
    struct sigaction action {};

    action.sa_handler = interrupt; // without SA_RESTART: a wait must end
    ::sigaction(SIGINT, &action, nullptr);
}

Terminal::~Terminal() {
    setProgress({});
    std::signal(SIGINT, SIG_DFL);
}

void Terminal::setProgress(const QString& text) {
    m_progress = printable(text);
    show(m_progress);
}

void Terminal::show(const QString& line) {
    if (!m_isTerminal || (line.isEmpty() && !m_isShown))
        return;
    write(QStringLiteral("\r\033[K") + line, stderr);
    m_isShown = !line.isEmpty();
}

std::function<bool(std::chrono::milliseconds)> Terminal::goOn() {
    return [this](std::chrono::milliseconds passed) {
        if (isInterrupted())
            return false;
        if (!m_progress.isEmpty() && passed >= 1s)
            show(m_progress + QStringLiteral(" %1 s").arg(passed / 1s));
        return true;
    };
}

bool Terminal::isInterrupted() {
    return interrupts != 0;
}

void Terminal::print(const QString& text) {
    write(text, stdout);
}

void Terminal::tell(const QString& text) {
    for (const QString& line : text.split(QLatin1Char('\n')))
        write(QStringLiteral("harvellon-connect: ") + printable(line) + QLatin1Char('\n'), stderr);
}
