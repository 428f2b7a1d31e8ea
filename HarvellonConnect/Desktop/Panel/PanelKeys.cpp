#include "Desktop/Panel/PanelKeys.h"

#include "Desktop/Panel/PanelCommands.h"

#include <algorithm>

namespace {
/// A key of the desktop's own for the start or the end of a document: Ctrl+Home, or ⌘↑ on macOS.
bool leadsTo(QKeySequence::StandardKey place, int key, Qt::KeyboardModifiers modifiers) {
    return modifiers != Qt::NoModifier &&
           QKeySequence::keyBindings(place).contains(QKeyCombination(modifiers, static_cast<Qt::Key>(key)));
}
} // namespace

std::optional<HoverTarget> obviousAction(int offers, bool connecting) {
    if (connecting)
        return {};
    for (const ProjectAction& action : ProjectActions::table()) {
        if ((offers & 1 << action.targetNumber()) != 0 && action.shortcut == QKeySequence(Qt::Key_Return))
            return action.target;
    }
    return HoverTarget::safari;
}

std::optional<int> rowAfter(int key, bool control, int row, int count, int page) {
    if (count == 0)
        return {};
    const auto inside = [count](int wanted) { return std::clamp(wanted, 0, count - 1); };
    switch (key) {
    case Qt::Key_Down:
        return inside(row + 1);
    case Qt::Key_Up:
        return inside(row - 1);
    case Qt::Key_PageDown:
        return inside(std::max(row, 0) + page);
    case Qt::Key_PageUp:
        return inside(row - page);
    case Qt::Key_Home:
        return control ? std::optional(0) : std::nullopt;
    case Qt::Key_End:
        return control ? std::optional(count - 1) : std::nullopt;
    default:
        return {};
    }
}

void PanelKeys::setState(AppState* state) {
    if (state == m_state)
        return;
    m_state = state;
    connect(m_state, &AppState::searchTextChanged, this, &PanelKeys::searchChanged);
    connect(m_state->visibleProjects(), &ProjectListModel::countChanged, this, &PanelKeys::listChanged);
    Q_EMIT stateChanged();
}

void PanelKeys::setCurrentRow(int row) {
    ProjectListModel* const rows = m_state->visibleProjects();
    m_domain = row < 0 ? QString() : rows->index(row).data(ProjectListModel::domainRole).toString();
    if (row == m_row)
        return;
    m_row = row;
    Q_EMIT currentRowChanged();
}

void PanelKeys::searchChanged() {
    setCurrentRow(m_state->searchText().isEmpty() || m_state->visibleProjects()->count() == 0 ? -1 : 0);
}

void PanelKeys::listChanged() {
    const int row = m_domain.isEmpty() ? -1 : m_state->visibleProjects()->rowOf(m_domain);
    if (row == m_row)
        return;
    m_row = row;
    Q_EMIT currentRowChanged();
}

void PanelKeys::showProject(const QString& domain) {
    m_state->setSearchText(QString());
    if (const int row = m_state->visibleProjects()->rowOf(domain); row >= 0)
        return setCurrentRow(row);
    m_state->setSearchText(domain);
    setCurrentRow(-1); // a row that is merely like it is not what Enter is meant for
}

bool PanelKeys::press(int key, int modifiers) {
    const Qt::KeyboardModifiers held =
        Qt::KeyboardModifiers::fromInt(modifiers) &
        (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (held & (Qt::AltModifier | Qt::MetaModifier)) // Meta is the control key on macOS
        return false;
    if (move(key, held))
        return true;
    switch (key) {
    case Qt::Key_Escape:
        return pressCommand(key, Qt::NoModifier);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!held.testFlag(Qt::ControlModifier))
            return performObvious();
        return pressAction(Qt::Key_Return, held);
    case Qt::Key_Menu:
        return requestMenu();
    case Qt::Key_F10:
        return held == Qt::ShiftModifier && requestMenu();
    case Qt::Key_F5:
        m_state->refresh();
        return true;
    default:
        return pressCommand(key, held);
    }
}

bool PanelKeys::pressElsewhere(int key, int modifiers, const QString& text) {
    if (press(key, modifiers))
        return true;
    if (text.isEmpty() || !text.front().isPrint() || modifiers & (Qt::ControlModifier | Qt::AltModifier))
        return false;
    Q_EMIT typed(text);
    return true;
}

bool PanelKeys::claims(int key, int modifiers) {
    const auto held = Qt::KeyboardModifiers::fromInt(modifiers) & ~Qt::KeypadModifier;
    return PanelCommands::of(QKeyCombination(held, static_cast<Qt::Key>(key))) !=
           PanelCommands::Command::none;
}

bool PanelKeys::pressCommand(int key, Qt::KeyboardModifiers modifiers) {
    using Command = PanelCommands::Command;
    const Command command = PanelCommands::of(QKeyCombination(modifiers, static_cast<Qt::Key>(key)));
    if (command == Command::none && modifiers != Qt::ControlModifier)
        return false;
    switch (command) {
    case Command::refresh:
        m_state->refresh();
        return true;
    case Command::fillSearch:
        m_state->fillSearchFromChrome();
        return true;
    case Command::clearSearch:
        if (m_state->searchText().isEmpty())
            Q_EMIT closeRequested();
        else
            m_state->setSearchText(QString());
        return true;
    case Command::settings:
        Q_EMIT settingsRequested();
        return true;
    case Command::updates:
        Q_EMIT updatesRequested();
        return true;
    case Command::activity:
        Q_EMIT activityRequested();
        return true;
    case Command::quit:
        Q_EMIT quitRequested();
        return true;
    case Command::close:
        Q_EMIT closeRequested();
        return true;
    case Command::none:
        break;
    }
    if (key >= Qt::Key_1 && key <= Qt::Key_9)
        return performPinned(key - Qt::Key_0);
    return pressAction(key, modifiers);
}

bool PanelKeys::pressAction(int key, Qt::KeyboardModifiers modifiers) {
    const QKeySequence pressed(QKeyCombination(modifiers & ~Qt::ShiftModifier, static_cast<Qt::Key>(key)));
    const bool shift = modifiers.testFlag(Qt::ShiftModifier);
    const int offers = m_state->visibleProjects()->rowState(m_domain).offers;
    bool ours = false; // even where the row does not offer it
    for (const ProjectAction& action : ProjectActions::table()) {
        if (action.shortcut != pressed || (shift && !action.hasAlternative))
            continue;
        ours = true;
        if ((offers & 1 << action.targetNumber()) == 0)
            continue;
        m_state->perform(action.targetNumber(), m_domain, shift);
        break; // what has been done may offer another action of the same key
    }
    return ours;
}

bool PanelKeys::move(int key, Qt::KeyboardModifiers modifiers) {
    constexpr int page = 10;
    if (modifiers & ~Qt::ControlModifier)
        return false;
    if (leadsTo(QKeySequence::MoveToStartOfDocument, key, modifiers))
        key = Qt::Key_Home;
    else if (leadsTo(QKeySequence::MoveToEndOfDocument, key, modifiers))
        key = Qt::Key_End;
    const auto row = rowAfter(key, modifiers.testFlag(Qt::ControlModifier), m_row,
                              m_state->visibleProjects()->count(), page);
    if (!row)
        return false;
    setCurrentRow(*row);
    Q_EMIT rowMoved();
    return true;
}

bool PanelKeys::performObvious() {
    if (m_row < 0)
        return false;
    performObvious(m_domain);
    return true;
}

void PanelKeys::performObvious(const QString& domain) {
    const RowState row = m_state->visibleProjects()->rowState(domain);
    if (const auto target = obviousAction(row.offers, row.connectingSince.has_value()))
        m_state->perform(static_cast<int>(*target), domain, false);
}

bool PanelKeys::requestMenu() {
    if (m_row >= 0)
        Q_EMIT menuRequested();
    return true;
}

bool PanelKeys::performPinned(int place) {
    if (const auto project = m_state->visibleProjects()->pinnedProject(place))
        performObvious(project->domain);
    return true;
}
