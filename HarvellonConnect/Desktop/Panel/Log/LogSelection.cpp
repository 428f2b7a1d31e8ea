#include "Desktop/Panel/Log/LogSelection.h"

#include <QStringList>

#include <algorithm>

void LogSelection::setLog(ActivityLog* log) {
    if (log == m_log)
        return;
    m_log = log;
    connect(log, &ActivityLog::countChanged, this, &LogSelection::changed);
    clear();
}

/// The log drops its oldest lines, so the first one stands for a selected line that is gone.
int LogSelection::rowOf(const QPersistentModelIndex& index) const {
    return isEmpty() ? -1 : std::max(index.row(), 0);
}

int LogSelection::first() const {
    return std::min(rowOf(m_anchor), rowOf(m_current));
}

int LogSelection::last() const {
    return std::max(rowOf(m_anchor), rowOf(m_current));
}

void LogSelection::choose(int row, bool extend) {
    if (m_log->count() == 0)
        return;
    const int anchor = rowOf(m_anchor);
    m_current = m_log->index(std::clamp(row, 0, m_log->count() - 1));
    m_anchor = extend && anchor >= 0 ? QPersistentModelIndex(m_log->index(anchor)) : m_current;
    Q_EMIT changed();
    Q_EMIT chosen();
}

void LogSelection::chooseAll() {
    choose(0, false);
    choose(m_log->count() - 1, true);
}

void LogSelection::clear() {
    m_anchor = QPersistentModelIndex();
    m_current = QPersistentModelIndex();
    Q_EMIT changed();
}

QString LogSelection::text() const {
    QStringList lines;
    for (int row = first(); row >= 0 && row <= last(); ++row) {
        const QModelIndex line = m_log->index(row);
        lines.append(line.data(ActivityLog::timeRole).toString() + QLatin1Char(' ') +
                     line.data(ActivityLog::messageRole).toString());
    }
    return lines.join(QLatin1Char('\n'));
}

bool LogSelection::press(int key, int modifiers) {
    const Qt::KeyboardModifiers held = Qt::KeyboardModifiers::fromInt(modifiers) & ~Qt::KeypadModifier;
    const bool shift = held == Qt::ShiftModifier;
    if (shift || held == Qt::NoModifier) {
        if (move(key, shift))
            return true;
        if (key == Qt::Key_Menu || (shift && key == Qt::Key_F10)) {
            if (!isEmpty())
                Q_EMIT menuRequested();
            return true;
        }
        if (key == Qt::Key_Return || key == Qt::Key_Enter)
            return true; // would open the project of the current row
        if (key != Qt::Key_Escape || isEmpty())
            return false;
        clear();
        return true;
    }
    if (held != Qt::ControlModifier || (key != Qt::Key_C && key != Qt::Key_A))
        return false;
    if (key == Qt::Key_A)
        chooseAll();
    else if (!isEmpty())
        Q_EMIT copyRequested(text());
    return true;
}

bool LogSelection::move(int key, bool extend) {
    const int newest = m_log->count() - 1;
    const int row = isEmpty() ? newest + 1 : current();
    switch (key) {
    case Qt::Key_Up:
        choose(row - 1, extend);
        return true;
    case Qt::Key_Down:
        choose(row + 1, extend);
        return true;
    case Qt::Key_Home:
        choose(0, extend);
        return true;
    case Qt::Key_End:
        choose(newest, extend);
        return true;
    default:
        return false;
    }
}
