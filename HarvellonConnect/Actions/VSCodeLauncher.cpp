#include "Actions/VSCodeLauncher.h"

#include "System/AtomicFile.h"
#include "System/Files/PrivateFolder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QString never = QStringLiteral("never");

bool isPlain(QChar character) {
    const char16_t unit = character.unicode();
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
           unit == '.' || unit == '_' || unit == '-';
}

bool isEdge(QChar character) {
    return character == QLatin1Char('-') || character == QLatin1Char('.');
}

/// What makes the editor read a folder, or ask its server, without the user having asked for it. Each setting
/// is explained in docs/architecture.md.
void quieten(QJsonObject& settings) {
    settings[QStringLiteral("files.watcherExclude")] = QJsonObject{{QStringLiteral("**"), true}};
    settings[QStringLiteral("git.autofetch")] = false;
    settings[QStringLiteral("git.autorefresh")] = false;
    settings[QStringLiteral("npm.autoDetect")] = QStringLiteral("off");
    settings[QStringLiteral("search.followSymlinks")] = false;
    settings[QStringLiteral("typescript.disableAutomaticTypeAcquisition")] = true;
}

QStringList codeArguments(const QString& target) {
    return {QStringLiteral("--new-window"), QStringLiteral("--disable-workspace-trust"), target};
}
} // namespace

QString sanitizedFileName(const QString& text) {
    QString name;
    for (const QChar character : text) {
        if (!character.isLowSurrogate()) // a pair is one character, and becomes one "-"
            name.append(isPlain(character) ? character : QLatin1Char('-'));
    }
    while (!name.isEmpty() && isEdge(name.back()))
        name.chop(1);
    while (!name.isEmpty() && isEdge(name.front()))
        name.remove(0, 1);
    return name.isEmpty() ? QStringLiteral("project") : name;
}

QByteArray workspaceFor(const QString& folder, bool quiet) {
    const QJsonObject bulky{{QStringLiteral("**/pdfs/**"), true}};
    QJsonObject settings{{QStringLiteral("editor.codeActionsOnSave"),
                          QJsonObject{{QStringLiteral("source.fixAll"), never},
                                      {QStringLiteral("source.organizeImports"), never}}},
                         {QStringLiteral("editor.formatOnSave"), false},
                         {QStringLiteral("files.watcherExclude"), bulky},
                         {QStringLiteral("search.exclude"), bulky}};
    if (quiet)
        quieten(settings);
    const QJsonObject workspace{
        {QStringLiteral("folders"), QJsonArray{QJsonObject{{QStringLiteral("path"), folder}}}},
        {QStringLiteral("settings"), settings}};
    return QJsonDocument(workspace).toJson(QJsonDocument::Indented);
}

QCoro::Task<bool> VSCodeLauncher::open(QString domain, QString folder) {
    const QString target = writeWorkspace(domain, folder).value_or(folder);
    const std::optional<QString> code = co_await locateCodeCommand();
    if (!code && m_host.editorOpen.executable.isEmpty())
        co_return false;
    if (code)
        launch(*code, codeArguments(target));
    else
        launch(m_host.editorOpen.executable, m_host.editorOpen.argumentsFor(target));
    co_return true;
}

void VSCodeLauncher::openWith(const QString& launcher, const QString& domain, const QString& folder) {
    launch(launcher, codeArguments(writeWorkspace(domain, folder).value_or(folder)));
}

/// Some launchers end only with their editor, so none is waited for.
void VSCodeLauncher::launch(const QString& executable, const QStringList& arguments) {
    try {
        m_shell.launch(executable, arguments);
    } catch (const ShellError&) {
        // An editor that does not start is plain to see; the mount is unharmed.
    }
}

std::optional<QString> VSCodeLauncher::writeWorkspace(const QString& domain, const QString& folder) const {
    const QString workspaces = m_host.temporaryFolder + QStringLiteral("/HarvellonConnect-VSCode");
    QDir().mkdir(m_host.temporaryFolder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // The editor opens the workspace without asking whether it is to be trusted.
    if (!makePrivateFolder(workspaces))
        return std::nullopt;
    const QString path =
        workspaces + QLatin1Char('/') + sanitizedFileName(domain) + QStringLiteral(".code-workspace");
    return writeAtomically(path, workspaceFor(folder, m_quiet)) ? std::optional(path) : std::nullopt;
}

QCoro::Task<std::optional<QString>> VSCodeLauncher::locateCodeCommand() {
    const QString name = QStringLiteral("code");
    if (std::optional<QString> found = co_await m_shell.which(name))
        co_return found;
    for (const QString& path : m_host.editorLaunchers) {
        if (QFile::exists(path))
            co_return path;
    }
    co_return std::nullopt;
}
