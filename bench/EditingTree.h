#pragma once

#include <QString>
#include <QStringList>

/// A project as large as the one that an editor is measured with: `folders` folders, the root included, and
/// `files` files of a few hundred to a few thousand bytes, in ten modules of equal size.
struct EditingTree {
    int files = 5'000;
    int folders = 648;

    /// Makes it in the folder `root`, which need not exist, as a git repository in which all is committed.
    /// Throws std::runtime_error.
    void make(const QString& root) const;
    /// The same without a repository.
    void makeFiles(const QString& root) const;
    /// Makes git's index fit the files again after they were saved.
    static void refreshIndex(const QString& root);

    /// Path of a folder below the root; number 0 is the first module, and the numbers end before `folders -
    /// 1`.
    [[nodiscard]] QString folder(int number) const;
    /// Path of a file below the root, from 0 on; consecutive ones lie in different folders.
    [[nodiscard]] QString file(int number) const;

    /// The word that a few files hold.
    static QString rareWord();
    static constexpr int modules = 10;
};
