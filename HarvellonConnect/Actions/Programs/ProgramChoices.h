#pragma once

#include <QHash>
#include <QString>

/// How a database is opened.
enum class DatabaseWay {
    ownSsh, ///< in the program for its addresses, which connects over ssh itself
    tunnel, ///< in that program, through a tunnel of ours
    shell   ///< with mysql in a terminal, through a tunnel of ours
};

/// Which of the user's programs the actions open. What is empty is as the desktop has it. The state sets it;
/// actions read it each time. Main thread.
struct ProgramChoices {
    /// The key of the command that the user has written.
    static QString own() { return QStringLiteral("own"); }

    QString editor; ///< a key; empty: VS Code
    QString editorCommand;
    QHash<QString, QString> editorsOfProjects; ///< by domain; an empty key is VS Code, too
    QString terminal;                          ///< a key
    QString terminalCommand;
    DatabaseWay database = DatabaseWay::ownSsh;

    [[nodiscard]] QString editorOf(const QString& domain) const {
        return editorsOfProjects.value(domain, editor);
    }
};

/// What the user is told of a program that is not there; `name` is empty where none has been named.
[[nodiscard]] inline QString missingProgram(const QString& name) {
    if (name.isEmpty())
        return QStringLiteral("Das Programm dafür ist noch nicht angegeben: siehe Einstellungen, Programme.");
    return QStringLiteral(
               "%1 wurde nicht gefunden. Ein anderes Programm kannst du in den Einstellungen wählen.")
        .arg(name);
}
