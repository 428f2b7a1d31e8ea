#include "Actions/Programs/OwnCommand.h"

#include "Actions/Rules/ShellWords.h"

#include <QProcess>

namespace {
const QString folderMark = QStringLiteral("%f");
const QString commandMark = QStringLiteral("%c");

std::optional<ExternalCommand> found(QStringList words, const QStringList& folders) {
    if (words.isEmpty())
        return std::nullopt;
    const std::optional<QString> program = findProgram({words.takeFirst()}, folders);
    return program ? std::optional(ExternalCommand{*program, words}) : std::nullopt;
}
} // namespace

std::optional<ExternalCommand> OwnCommand::opening(const QString& folder, const QString& line,
                                                   const QStringList& folders) {
    QStringList words = QProcess::splitCommand(line);
    if (!line.contains(folderMark) && !words.isEmpty())
        words.append(folderMark);
    for (QString& word : words)
        word.replace(folderMark, folder);
    return found(words, folders);
}

std::optional<ExternalCommand> OwnCommand::inTerminal(const QStringList& command, const QString& line,
                                                      const QStringList& folders) {
    QStringList words;
    for (QString word : QProcess::splitCommand(line)) {
        if (word == commandMark)
            words += command;
        else
            words += word.replace(commandMark, shellLine(command));
    }
    if (!line.contains(commandMark) && !command.isEmpty() && !words.isEmpty())
        words += QStringList{QStringLiteral("-e")} + command;
    return found(words, folders);
}

QString OwnCommand::programOf(const QString& line) {
    return QProcess::splitCommand(line).value(0);
}
