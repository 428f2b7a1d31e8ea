#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// A program that the user may have, and how it is found.
struct KnownProgram {
    /// What an editor is given.
    enum class Takes {
        workspace,       ///< the generated workspace file, with the arguments of VS Code
        folder,          ///< the folder as its one argument
        folderInTerminal ///< the same, in a terminal
    };

    QString key;       ///< under which a choice is remembered
    QString name;      ///< as its makers write it
    QStringList files; ///< in order of preference: commands, or bundles seen from a folder of programs
    Takes takes = Takes::folder;

    bool operator==(const KnownProgram&) const = default;
};

/// The first of `files` that is there: on the search path, else in `folders`, where a bundle counts as well.
/// Any thread; asks the file system.
[[nodiscard]] std::optional<QString> findProgram(const QStringList& files, const QStringList& folders);

/// Those of `programs` that are there. Any thread; asks the file system.
[[nodiscard]] QList<KnownProgram> foundPrograms(const QList<KnownProgram>& programs,
                                                const QStringList& folders);

// What both desktops know.
[[nodiscard]] QList<KnownProgram> linuxEditors();
[[nodiscard]] QList<KnownProgram> macOSEditors();
[[nodiscard]] QList<KnownProgram> linuxTerminals();
[[nodiscard]] QList<KnownProgram> macOSTerminals();
[[nodiscard]] KnownProgram databaseShell();
