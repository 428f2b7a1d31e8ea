#include "sandbox/Sandbox.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdio>
#include <exception>
#include <unistd.h>

namespace {
std::array<int, 2> signalPipe{-1, -1};

void passOn(int) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

/// Calls `quit` when there is something to read, or only when there is nothing more to come.
void quitOn(QSocketNotifier& notifier, bool atEndOnly) {
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier, atEndOnly] {
        std::array<char, 256> ignored{};
        if (::read(static_cast<int>(notifier.socket()), ignored.data(), ignored.size()) <= 0 || !atEndOnly)
            QCoreApplication::quit();
    });
}

void announce(sandbox::Sandbox& platform) {
    QJsonObject ready{{QStringLiteral("server"), platform.server()}};
    if (platform.hasSsh()) {
        ready.insert(QStringLiteral("ssh_port"), platform.ssh().port());
        ready.insert(QStringLiteral("ssh_config"), platform.ssh().configFile());
        ready.insert(QStringLiteral("bin"), platform.ssh().binFolder());
    }
    std::printf("%s\n", QJsonDocument(ready).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

int run(const sandbox::Options& options) {
    if (::pipe(signalPipe.data()) != 0)
        throw std::runtime_error("no pipe for signals");
    std::signal(SIGTERM, passOn);
    std::signal(SIGINT, passOn);
    sandbox::Sandbox platform(options);
    announce(platform);

    // The parent process holds the other end of standard input: end when it is closed.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    quitOn(input, true);
    QSocketNotifier signal(signalPipe[0], QSocketNotifier::Read);
    quitOn(signal, false);
    return QCoreApplication::exec();
}
} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The platform in small, for development. Runs until its standard input ends."));
    parser.addHelpOption();
    const QCommandLineOption folder(
        QStringLiteral("folder"), QStringLiteral("Holds everything between runs."), QStringLiteral("folder"));
    const QCommandLineOption projects(QStringLiteral("projects"),
                                      QStringLiteral("Invents that many projects for each person."),
                                      QStringLiteral("count"));
    parser.addOptions({folder, projects});
    parser.process(application);
    bool isNumber = true;
    const int count = parser.isSet(projects) ? parser.value(projects).toInt(&isNumber) : 0;
    if (parser.value(folder).isEmpty() || !isNumber || count < 0) {
        std::fprintf(stderr, "sandbox: --folder and a folder are needed; --projects takes a number\n");
        return EXIT_FAILURE;
    }
    try {
        return run({parser.value(folder), count, true});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "sandbox: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
