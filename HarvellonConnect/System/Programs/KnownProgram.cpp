#include "System/Programs/KnownProgram.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace {
using Takes = KnownProgram::Takes;

struct Entry {
    const char* key;
    const char* name;
    const char* files; ///< separated by "|"
    Takes takes = Takes::folder;
};

template <size_t Count>
QList<KnownProgram> listOf(const Entry (&entries)[Count]) {
    QList<KnownProgram> programs;
    for (const Entry& entry : entries)
        programs.append({QString::fromLatin1(entry.key), QString::fromLatin1(entry.name),
                         QString::fromLatin1(entry.files).split(QLatin1Char('|')), entry.takes});
    return programs;
}
} // namespace

std::optional<QString> findProgram(const QStringList& files, const QStringList& folders) {
    for (const QString& file : files) {
        if (const QString onPath = QStandardPaths::findExecutable(file); !onPath.isEmpty())
            return onPath;
        for (const QString& folder : folders) {
            const QString path = folder + QLatin1Char('/') + file;
            const QFileInfo there(path);
            const bool isBundle = there.isDir() && file.endsWith(QLatin1String(".app"));
            if (isBundle || (there.isFile() && there.isExecutable()))
                return path;
        }
    }
    return std::nullopt;
}

QList<KnownProgram> foundPrograms(const QList<KnownProgram>& programs, const QStringList& folders) {
    QList<KnownProgram> found = programs;
    found.removeIf([&](const KnownProgram& program) { return !findProgram(program.files, folders); });
    return found;
}

QList<KnownProgram> linuxEditors() {
    // Beside the plain commands those of snap and flatpak. "zed" comes last: other programs have that name.
    static constexpr Entry editors[] = {
        {"vscodium", "VSCodium", "codium|vscodium|com.vscodium.codium", Takes::workspace},
        {"cursor", "Cursor", "cursor", Takes::workspace},
        {"zed", "Zed", "zeditor|zedit|dev.zed.Zed|zed"},
        {"phpstorm", "PhpStorm", "phpstorm|phpstorm.sh|com.jetbrains.PhpStorm"},
        {"webstorm", "WebStorm", "webstorm|webstorm.sh|com.jetbrains.WebStorm"},
        {"idea", "IntelliJ IDEA",
         "idea|idea.sh|intellij-idea-ultimate|intellij-idea-community|"
         "com.jetbrains.IntelliJ-IDEA-Ultimate|com.jetbrains.IntelliJ-IDEA-Community"},
        {"pycharm", "PyCharm",
         "pycharm|pycharm.sh|pycharm-professional|pycharm-community|com.jetbrains.PyCharm-Professional|"
         "com.jetbrains.PyCharm-Community"},
        {"rubymine", "RubyMine", "rubymine|rubymine.sh|com.jetbrains.RubyMine"},
        {"goland", "GoLand", "goland|goland.sh|com.jetbrains.GoLand"},
        {"sublime", "Sublime Text", "subl|sublime_text|com.sublimetext.three"},
        {"neovim", "Neovim", "nvim|io.neovim.nvim", Takes::folderInTerminal}};
    return listOf(editors);
}

QList<KnownProgram> macOSEditors() {
    static constexpr Entry editors[] = {
        {"vscodium", "VSCodium", "VSCodium.app/Contents/Resources/app/bin/codium", Takes::workspace},
        {"cursor", "Cursor", "Cursor.app/Contents/Resources/app/bin/cursor", Takes::workspace},
        {"zed", "Zed", "Zed.app"},
        {"phpstorm", "PhpStorm", "PhpStorm.app"},
        {"webstorm", "WebStorm", "WebStorm.app"},
        {"idea", "IntelliJ IDEA", "IntelliJ IDEA.app|IntelliJ IDEA Ultimate.app|IntelliJ IDEA CE.app"},
        {"pycharm", "PyCharm", "PyCharm.app|PyCharm Professional Edition.app|PyCharm CE.app"},
        {"rubymine", "RubyMine", "RubyMine.app"},
        {"goland", "GoLand", "GoLand.app"},
        {"sublime", "Sublime Text", "Sublime Text.app"},
        {"neovim", "Neovim", "nvim", Takes::folderInTerminal}};
    return listOf(editors);
}

QList<KnownProgram> linuxTerminals() {
    static constexpr Entry terminals[] = {{"gnome-terminal", "GNOME Terminal", "gnome-terminal"},
                                          {"kgx", "GNOME Konsole", "kgx"},
                                          {"ptyxis", "Ptyxis", "ptyxis"},
                                          {"konsole", "Konsole", "konsole"},
                                          {"xfce4-terminal", "Xfce Terminal", "xfce4-terminal"},
                                          {"mate-terminal", "MATE Terminal", "mate-terminal"},
                                          {"lxterminal", "LXTerminal", "lxterminal"},
                                          {"tilix", "Tilix", "tilix"},
                                          {"terminator", "Terminator", "terminator"},
                                          {"alacritty", "Alacritty", "alacritty"},
                                          {"kitty", "kitty", "kitty"},
                                          {"foot", "foot", "foot"},
                                          {"wezterm", "WezTerm", "wezterm"},
                                          {"ghostty", "Ghostty", "ghostty"},
                                          {"xterm", "XTerm", "xterm"}};
    return listOf(terminals);
}

QList<KnownProgram> macOSTerminals() {
    static constexpr Entry terminals[] = {
        {"iterm", "iTerm", "iTerm.app"},
        {"ghostty", "Ghostty", "Ghostty.app"},
        {"alacritty", "Alacritty", "Alacritty.app/Contents/MacOS/alacritty"},
        {"kitty", "kitty", "kitty.app/Contents/MacOS/kitty"},
        {"wezterm", "WezTerm", "WezTerm.app/Contents/MacOS/wezterm"}};
    return listOf(terminals);
}

KnownProgram databaseShell() {
    return {QStringLiteral("mysql"),
            QStringLiteral("mysql im Terminal"),
            {QStringLiteral("mysql"), QStringLiteral("mariadb")},
            {}};
}
