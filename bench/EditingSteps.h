#pragma once

#include "bench/EditingTree.h"

#include <QString>

/// What an editor, its search and git do with a project, asked for as they ask: one question after the other,
/// except inside git and ripgrep. Each step yields the milliseconds it took and throws std::runtime_error
/// when it does not find what the tree holds.
class EditingSteps {
  public:
    /// `root`: where the tree lies, mounted or not.
    EditingSteps(QString root, const EditingTree& tree) : m_root(std::move(root)), m_tree(tree) {}

    /// Lists every folder outside `.git/objects` and looks at every entry, as a watcher does when it starts.
    [[nodiscard]] double crawl() const;
    /// What the editor offers for "open by name": ripgrep's list of files.
    [[nodiscard]] double listFiles() const;
    /// Ten folders of the explorer, unfolded one after the other.
    [[nodiscard]] double explore() const;
    [[nodiscard]] double gitStatus() const;
    /// Looks at 25 files, opens and reads them.
    [[nodiscard]] double openFiles() const;
    /// Saves 10 files in place, looks at them and reads them back.
    [[nodiscard]] double saveFiles() const;
    /// Searches one module, a tenth of all files, with ripgrep.
    [[nodiscard]] double search() const;

  private:
    [[nodiscard]] QString path(const QString& inTree) const { return m_root + QLatin1Char('/') + inTree; }

    const QString m_root;
    const EditingTree m_tree;
};
