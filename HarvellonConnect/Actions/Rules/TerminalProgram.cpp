#include "Actions/Rules/TerminalProgram.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace {
struct Terminal {
    QLatin1StringView name;
    QLatin1StringView runs; ///< the argument after which the command follows
};

constexpr Terminal knownTerminals[] = {
    {QLatin1StringView("xdg-terminal-exec"), QLatin1StringView()},
    {QLatin1StringView("gnome-terminal"), QLatin1StringView("--")},
    {QLatin1StringView("kgx"), QLatin1StringView("-e")},
    {QLatin1StringView("konsole"), QLatin1StringView("-e")},
    {QLatin1StringView("xfce4-terminal"), QLatin1StringView("-x")},
    {QLatin1StringView("mate-terminal"), QLatin1StringView("-x")},
    {QLatin1StringView("lxterminal"), QLatin1StringView("-e")},
    {QLatin1StringView("alacritty"), QLatin1StringView("-e")},
    {QLatin1StringView("kitty"), QLatin1StringView()},
    {QLatin1StringView("foot"), QLatin1StringView()},
    {QLatin1StringView("ptyxis"), QLatin1StringView("--")},
    {QLatin1StringView("terminator"), QLatin1StringView("-x")},
    {QLatin1StringView("x-terminal-emulator"), QLatin1StringView("-e")},
    {QLatin1StringView("xterm"), QLatin1StringView("-e")},
};
} // namespace

QStringList terminalArguments(const QString& executable) {
    // The alternatives system links to the real program, which decides how a command is handed over.
    for (const QString& path : {executable, QFileInfo(executable).canonicalFilePath()}) {
        for (const Terminal& terminal : knownTerminals) {
            const bool named = QFileInfo(path).fileName() == terminal.name;
            if (named && terminal.name != QLatin1StringView("x-terminal-emulator"))
                return terminal.runs.isEmpty() ? QStringList() : QStringList{terminal.runs};
        }
    }
    return {QStringLiteral("-e")};
}

std::optional<ExternalCommand> terminalProgram(const QStringList& searchPath, const QString& preferred) {
    QStringList names{QStringLiteral("xdg-terminal-exec")};
    if (!preferred.isEmpty())
        names.append(preferred);
    names.append(QStringLiteral("x-terminal-emulator"));
    for (const Terminal& terminal : knownTerminals)
        names.append(terminal.name);
    for (const QString& name : names) {
        const QString found = QStandardPaths::findExecutable(name, searchPath);
        if (!found.isEmpty())
            return ExternalCommand{found, terminalArguments(found)};
    }
    return std::nullopt;
}
