#include "Actions/Programs/ChosenEditor.h"

#include "Actions/Openers.h"
#include "Actions/Programs/OwnCommand.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/VSCodeLauncher.h"
#include "System/Reporter.h"
#include "System/Shell.h"

#include <algorithm>

namespace {
/// Whether the program has been started; otherwise the user has been told.
bool start(const ActionContext& context, const std::optional<ExternalCommand>& command, const QString& name) {
    if (!command) {
        context.report.warn(missingProgram(name));
        return false;
    }
    try {
        context.shell.launch(command->executable, command->arguments);
        return true;
    } catch (const ShellError& error) {
        context.report.warn(error.description());
        return false;
    }
}

/// A bundle is opened by the desktop.
ExternalCommand opening(const HostSystem& host, const QString& program, const QString& folder) {
    if (program.endsWith(QLatin1String(".app")))
        return {host.opener.executable, {QStringLiteral("-a"), program, folder}};
    return {program, {folder}};
}
} // namespace

std::optional<QString> openChosenEditor(const ActionContext& context, const QString& key,
                                        const QString& domain, const QString& folder) {
    const QStringList& folders = context.host.programFolders;
    if (key == ProgramChoices::own()) {
        const QString& line = context.programs.editorCommand;
        const QString name = OwnCommand::programOf(line);
        const bool started = start(context, OwnCommand::opening(folder, line, folders), name);
        return started ? std::optional(name) : std::nullopt;
    }
    const QList<KnownProgram>& known = context.host.editors;
    const auto editor = std::find_if(known.begin(), known.end(),
                                     [&](const KnownProgram& program) { return program.key == key; });
    if (editor == known.end()) {
        context.report.warn(missingProgram(key)); // chosen in another version of this program
        return std::nullopt;
    }
    const QString name = editor->name;
    const std::optional<QString> program = findProgram(editor->files, folders);
    if (program && editor->takes == KnownProgram::Takes::workspace) {
        context.editor.openWith(*program, domain, folder);
        return name;
    }
    if (program && editor->takes == KnownProgram::Takes::folderInTerminal) {
        const bool opened = openTerminal(context, {*program, folder});
        return opened ? std::optional(name) : std::nullopt;
    }
    const std::optional<ExternalCommand> command =
        program ? std::optional(opening(context.host, *program, folder)) : std::nullopt;
    return start(context, command, name) ? std::optional(name) : std::nullopt;
}
