#include "Actions/Programs/ChosenTerminal.h"

#include "Actions/Programs/OwnCommand.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/Rules/ShellWords.h"
#include "Actions/Rules/TerminalProgram.h"
#include "System/Files/PrivateFolder.h"
#include "System/Reporter.h"

#include <QTemporaryFile>

#include <algorithm>

std::optional<ExternalCommand> chosenTerminal(const ActionContext& context, const QStringList& command) {
    const QStringList& folders = context.host.programFolders;
    const ProgramChoices& choices = context.programs;
    if (choices.terminal == ProgramChoices::own()) {
        const QString& line = choices.terminalCommand;
        const std::optional<ExternalCommand> own = OwnCommand::inTerminal(command, line, folders);
        if (!own)
            context.report.warn(missingProgram(OwnCommand::programOf(line)));
        return own;
    }
    const QList<KnownProgram>& known = context.host.terminals;
    const auto terminal = std::find_if(known.begin(), known.end(), [&](const KnownProgram& program) {
        return program.key == choices.terminal;
    });
    const std::optional<QString> program =
        terminal == known.end() ? std::nullopt : findProgram(terminal->files, folders);
    if (!program) {
        context.report.warn(missingProgram(terminal == known.end() ? choices.terminal : terminal->name));
        return std::nullopt;
    }
    if (program->endsWith(QLatin1String(".app")))
        return bundledTerminal(context, *program, command);
    return ExternalCommand{*program,
                           command.isEmpty() ? QStringList() : terminalArguments(*program) + command};
}

std::optional<ExternalCommand> bundledTerminal(const ActionContext& context, const QString& bundle,
                                               const QStringList& command) {
    const QString& opener = context.host.opener.executable;
    const QStringList open{QStringLiteral("-a"), bundle};
    if (command.isEmpty())
        return ExternalCommand{opener, open};
    const QString folder = context.host.temporaryFolder + QStringLiteral("/HarvellonConnect-Terminal");
    QTemporaryFile script(folder + QStringLiteral("/XXXXXX.command"));
    script.setAutoRemove(false);
    const QByteArray text = "#!/bin/sh\nrm -f -- \"$0\"\nexec " + shellLine(command).toUtf8() + '\n';
    const bool written = makePrivateFolder(folder) && script.open() && script.write(text) == text.size() &&
                         script.flush() &&
                         script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (written)
        return ExternalCommand{opener, open + QStringList{script.fileName()}};
    context.report.warn(
        QStringLiteral("Das Terminal wurde nicht geöffnet: In %1 kann nicht geschrieben werden.")
            .arg(folder));
    return std::nullopt;
}
