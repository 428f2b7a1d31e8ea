#include "Actions/Openers.h"

#include "Actions/Programs/ChosenTerminal.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/Rules/TerminalProgram.h"
#include "System/Reporter.h"
#include "System/Shell.h"

using namespace std::chrono_literals;

namespace {
void openWith(Shell& shell, const ExternalCommand& opener, const QString& address) {
    try {
        shell.launch(opener.executable, opener.argumentsFor(address));
    } catch (const ShellError&) {
        // The user sees that nothing opens.
    }
}

/// The desktop's own; logs a warning where there is none.
std::optional<ExternalCommand> usualTerminal(const ActionContext& context, const QStringList& command) {
    const ExternalCommand& known = context.host.terminal;
    if (!known.executable.isEmpty())
        return command.isEmpty() ? known : bundledTerminal(context, known.arguments.last(), command);
    const std::optional<ExternalCommand> found = terminalProgram({}, qEnvironmentVariable("TERMINAL"));
    if (!found) {
        context.report.log(QStringLiteral("Kein Terminal gefunden."), ActivityLogLevel::warning);
        return std::nullopt;
    }
    return ExternalCommand{found->executable, command.isEmpty() ? QStringList() : found->arguments + command};
}
} // namespace

void openAddress(const ActionContext& context, const QString& address) {
    openWith(context.shell, context.host.opener, address);
}

void openSecretAddress(const ActionContext& context, const QString& address) {
    openWith(context.shell, context.host.secretOpener, address);
}

QCoro::Task<bool> opensAddresses(const ActionContext& context, QString scheme) {
    if (context.host.handlerQuery.executable.isEmpty())
        co_return true;
    const QStringList arguments =
        context.host.handlerQuery.argumentsFor(QStringLiteral("x-scheme-handler/") + scheme);
    try {
        const ShellResult result =
            co_await context.shell.run(context.host.handlerQuery.executable, arguments, 5s);
        co_return result.exitCode == 0 && !result.stdout.trimmed().isEmpty();
    } catch (const ShellError&) {
        co_return false;
    }
}

bool openTerminal(const ActionContext& context, const QStringList& command) {
    const bool chosen = !context.programs.terminal.isEmpty();
    const std::optional<ExternalCommand> terminal =
        chosen ? chosenTerminal(context, command) : usualTerminal(context, command);
    if (!terminal)
        return false;
    try {
        context.shell.launch(terminal->executable, terminal->arguments);
        return true;
    } catch (const ShellError&) {
        return false; // The user sees that nothing opens.
    }
}
