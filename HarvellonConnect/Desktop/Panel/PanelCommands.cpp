#include "Desktop/Panel/PanelCommands.h"

#include "Actions/ProjectActions.h"

#include <algorithm>
#include <array>

namespace {
struct Entry {
    PanelCommands::Command command;
    QKeyCombination keys;
};

// On macOS none of these is one of the system's own: ⌘H, ⌘M, ⌘Tab, ⌘Space, ⌘` and their variants. ⌘, ⌘Q and
// ⌘W mean there what they mean here.
constexpr std::array table{
    Entry{PanelCommands::Command::refresh, Qt::CTRL | Qt::Key_R},
    Entry{PanelCommands::Command::fillSearch, Qt::CTRL | Qt::Key_K},
    Entry{PanelCommands::Command::clearSearch, QKeyCombination(Qt::Key_Escape)},
    Entry{PanelCommands::Command::settings, Qt::CTRL | Qt::Key_Comma},
    Entry{PanelCommands::Command::updates, Qt::CTRL | Qt::Key_U},
    Entry{PanelCommands::Command::activity, Qt::CTRL | Qt::Key_J},
    Entry{PanelCommands::Command::quit, Qt::CTRL | Qt::Key_Q},
    Entry{PanelCommands::Command::close, Qt::CTRL | Qt::Key_W},
};
} // namespace

PanelCommands::Command PanelCommands::of(const QKeySequence& pressed) {
    const auto* const entry = std::find_if(
        table.begin(), table.end(), [&](const Entry& each) { return pressed == QKeySequence(each.keys); });
    return entry == table.end() ? Command::none : entry->command;
}

QString PanelCommands::shownKeys(Command command) {
    const auto* const entry =
        std::find_if(table.begin(), table.end(), [&](const Entry& each) { return each.command == command; });
    return keyText(QKeySequence(entry->keys));
}

QString PanelCommands::shown(const QString& portable) {
    return keyText(QKeySequence(portable, QKeySequence::PortableText));
}
