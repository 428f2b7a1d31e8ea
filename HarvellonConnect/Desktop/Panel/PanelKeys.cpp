#include "Desktop/Panel/PanelKeys.h"

#include "Desktop/Panel/Rows/RowButtons.h"
#include "State/AppState.h"
#include "State/RowActions.h"

#include <algorithm>

std::optional<HoverTarget> obviousAction(bool mayConnect, bool mayOpen, bool connecting) {
    if (connecting)
        return {};
    if (mayOpen)
        return HoverTarget::vscode;
    if (mayConnect)
        return HoverTarget::connect;
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
        setCurrentRow(row);
}

bool PanelKeys::press(int key, int modifiers) {
    const Qt::KeyboardModifiers held = Qt::KeyboardModifiers::fromInt(modifiers) &
                                       (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    if (held.testFlag(Qt::AltModifier))
        return false;
    if (move(key, held))
        return true;
    switch (key) {
    case Qt::Key_Escape:
        if (m_state->searchText().isEmpty())
            Q_EMIT closeRequested();
        else
            m_state->setSearchText(QString());
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (held.testFlag(Qt::ControlModifier))
            return perform(HoverTarget::safari, held.testFlag(Qt::ShiftModifier));
        return performObvious();
    case Qt::Key_F5:
        m_state->startRefresh();
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

bool PanelKeys::pressCommand(int key, Qt::KeyboardModifiers modifiers) {
    if (modifiers != Qt::ControlModifier)
        return false;
    switch (key) {
    case Qt::Key_R:
        m_state->startRefresh();
        return true;
    case Qt::Key_K:
        m_state->startFillSearchFromChrome();
        return true;
    case Qt::Key_Comma:
        Q_EMIT settingsRequested();
        return true;
    case Qt::Key_U:
        Q_EMIT updatesRequested();
        return true;
    case Qt::Key_J:
        Q_EMIT activityRequested();
        return true;
    case Qt::Key_Q:
        Q_EMIT quitRequested();
        return true;
    case Qt::Key_W:
        Q_EMIT closeRequested();
        return true;
    default:
        break;
    }
    for (const HoverTarget target : {HoverTarget::disconnect, HoverTarget::finder, HoverTarget::ssh,
                                     HoverTarget::database, HoverTarget::cache}) {
        if (RowButtons::facts(target).shortcut ==
            QKeySequence(QKeyCombination(modifiers, static_cast<Qt::Key>(key))))
            return perform(target);
    }
    return false;
}

bool PanelKeys::move(int key, Qt::KeyboardModifiers modifiers) {
    constexpr int page = 10;
    if (modifiers & ~Qt::ControlModifier)
        return false;
    const auto row = rowAfter(key, modifiers.testFlag(Qt::ControlModifier), m_row,
                              m_state->visibleProjects()->count(), page);
    if (!row)
        return false;
    setCurrentRow(*row);
    Q_EMIT rowMoved();
    return true;
}

namespace {
bool offered(const RowActions& actions, HoverTarget target) {
    switch (target) {
    case HoverTarget::connect:
        return actions.connect;
    case HoverTarget::disconnect:
        return actions.disconnect;
    case HoverTarget::vscode:
        return actions.vscode;
    case HoverTarget::finder:
        return actions.finder;
    case HoverTarget::ssh:
        return actions.ssh;
    case HoverTarget::database:
        return actions.database;
    case HoverTarget::cache:
        return actions.cache;
    case HoverTarget::safari:
        return actions.safari;
    }
    Q_UNREACHABLE();
}
} // namespace

bool PanelKeys::perform(HoverTarget target, bool shift) {
    const QModelIndex row = m_state->visibleProjects()->index(m_row);
    if (row.isValid() && offered(row.data(ProjectListModel::actionsRole).value<RowActions>(), target))
        RowButtons::perform(m_state, target, m_domain, shift);
    return true; // a key of ours even where the row doesn't offer it
}

bool PanelKeys::performObvious() {
    const QModelIndex row = m_state->visibleProjects()->index(m_row);
    if (!row.isValid())
        return false;
    const auto actions = row.data(ProjectListModel::actionsRole).value<RowActions>();
    const auto target =
        obviousAction(actions.connect, actions.vscode, row.data(ProjectListModel::connectingRole).toBool());
    if (target)
        perform(*target);
    return true;
}
