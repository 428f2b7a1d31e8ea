#pragma once

#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>

#include <optional>

/// Any text as a file name: letters, digits, ".", "_" and "-" stay, the rest becomes "-".
QString sanitizedFileName(const QString& text);

/// The workspace for `folder`, with settings for a folder that lives on a network: nothing is rewritten on
/// save, and bulky folders are neither watched nor searched. A quiet one also keeps the editor from reading
/// the whole folder by itself.
QByteArray workspaceFor(const QString& folder, bool quiet);

/// Opens folders in Visual Studio Code and its relatives. Main thread.
class VSCodeLauncher {
  public:
    /// `shell` must outlive this.
    VSCodeLauncher(HostSystem host, Shell& shell) : m_host(std::move(host)), m_shell(shell) {}

    /// Opens `folder` in a new window through a generated workspace file named after `domain`; where that
    /// cannot be written, or somebody else could replace it, the folder itself. Never fails; false where
    /// the host has nothing that could open the editor.
    QCoro::Task<bool> open(QString domain, QString folder);

    /// The same with `launcher`, which takes the arguments of the `code` command.
    void openWith(const QString& launcher, const QString& domain, const QString& folder);

    /// Whether workspaces are quiet ones, from the next `open` on.
    void setQuiet(bool quiet) { m_quiet = quiet; }

    [[nodiscard]] bool isQuiet() const { return m_quiet; }

  private:
    [[nodiscard]] std::optional<QString> writeWorkspace(const QString& domain, const QString& folder) const;
    QCoro::Task<std::optional<QString>> locateCodeCommand();
    void launch(const QString& executable, const QStringList& arguments);

    HostSystem m_host;
    Shell& m_shell;
    bool m_quiet = false;
};
