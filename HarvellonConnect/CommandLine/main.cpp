// The command harvellon-connect: asks the running program, and starts it where it does not run.

#include "CommandLine/Arguments.h"
#include "CommandLine/ProgramStart.h"
#include "CommandLine/Terminal.h"
#include "System/HostSystem.h"
#include "System/Requests/RequestClient.h"
#include "System/Requests/RequestSocket.h"

#include <QCoreApplication>
#include <QFileInfo>

using namespace std::chrono_literals;

namespace {
using Command = Request::Command;

/// The program lies beside this one, which may be called through a link.
ProgramStart startOf(const HostSystem& host) {
    return {QFileInfo(QCoreApplication::applicationFilePath()).canonicalPath() +
                QStringLiteral("/HarvellonConnect"),
            host.bundleOpener};
}

std::chrono::milliseconds limitOf(Command command) {
    return command == Command::show || command == Command::toggle ? 20s : 90s;
}

bool connects(const Request& request) {
    return request.command == Command::connect ||
           (request.command == Command::open &&
            (request.target == OpenTarget::editor || request.target == OpenTarget::files));
}

QString progressOf(const Request& request) {
    return connects(request) ? QStringLiteral("Verbinde mit %1 ...").arg(request.project) : QString();
}

int runProgram(const HostSystem& host) {
    const std::optional<QString> socket = requestSocket(host);
    // Asked directly the running program shows itself at once, and without a screen of ours.
    std::optional<RequestClient> running = socket ? RequestClient::to(*socket) : std::nullopt;
    if (running && running->send({}) && running->receive(5s, [](auto) { return true; }))
        return ExitStatus::done;
    becomeProgram(startOf(host));
    throw RequestError(ExitStatus::notReady, QStringLiteral("Harvellon Connect ist nicht installiert."));
}

int interrupted(const Request& request) {
    if (connects(request))
        Terminal::tell(QStringLiteral("Das Verbinden mit %1 geht weiter.").arg(request.project));
    return Terminal::interruptedStatus;
}

int ask(const Invocation& invocation, const HostSystem& host) {
    const std::optional<QString> socket = requestSocket(host);
    if (!socket)
        throw RequestError(ExitStatus::notReady, QStringLiteral("Harvellon Connect läuft nicht."));
    Terminal terminal;
    const Request& request = invocation.request;
    std::optional<RequestClient> running = RequestClient::to(*socket);
    if (!running && !invocation.mayStart)
        throw RequestError(ExitStatus::notReady, QStringLiteral("Harvellon Connect läuft nicht."));
    if (!running) {
        terminal.setProgress(QStringLiteral("Harvellon Connect startet ..."));
        try {
            running = startProgram(startOf(host), *socket, terminal.goOn());
        } catch (const RequestError&) {
            if (Terminal::isInterrupted())
                return Terminal::interruptedStatus;
            throw;
        }
    }
    terminal.setProgress(progressOf(request));
    std::optional<Answer> answer;
    if (running->send(request))
        answer = running->receive(limitOf(request.command), terminal.goOn());
    terminal.setProgress({});
    if (Terminal::isInterrupted())
        return interrupted(request);
    if (!answer)
        throw RequestError(ExitStatus::notReady, QStringLiteral("Harvellon Connect antwortet nicht."));
    Terminal::print(answer->output);
    if (!answer->error.isEmpty())
        Terminal::tell(answer->error);
    return answer->exitStatus;
}

int run(const QStringList& words) {
    const Invocation invocation = Invocation::of(words);
    switch (invocation.kind) {
    case Invocation::Kind::help:
        Terminal::print(usage());
        return ExitStatus::done;
    case Invocation::Kind::version:
        Terminal::print(QStringLiteral("Harvellon Connect " HARVELLON_VERSION "\n"));
        return ExitStatus::done;
    case Invocation::Kind::program:
        return runProgram(HostSystem::current());
    case Invocation::Kind::request:
        break;
    }
    return ask(invocation, HostSystem::current());
}
} // namespace

int main(int argc, char* argv[]) {
    // Qt warns about locales that are not UTF-8, on the standard error of scripts.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QCoreApplication application(argc, argv);
    try {
        return run(QCoreApplication::arguments().mid(1));
    } catch (const RequestError& error) {
        Terminal::tell(error.description());
        if (error.exitStatus() == ExitStatus::wrongUsage)
            Terminal::tell(QStringLiteral("Hilfe: harvellon-connect --help"));
        return error.exitStatus();
    }
}
