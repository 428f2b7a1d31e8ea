#include "System/TerminationSignals.h"

#include <array>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
/// A signal handler may do next to nothing: it writes a byte, which the event loop reads.
std::array<int, 2> ends{-1, -1};

void handle(int) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(ends[0], &byte, sizeof byte);
}

int readingEnd() {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
        qFatal("no socket pair for signals");
    return ends[1];
}
} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent), m_notifier(readingEnd(), QSocketNotifier::Read) {
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(ends[1], &byte, sizeof byte) > 0)
            Q_EMIT received();
    });

    struct sigaction action {};

    action.sa_handler = handle;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}
