#pragma once

#include <QAccessible>
#include <QPoint>
#include <QStringList>
#include <QWindow>

#include <functional>

/// What a screen reader announces of a window: its controls by their accessible names.
namespace heard {
inline void visit(QAccessibleInterface* from, const std::function<void(QAccessibleInterface*)>& visitor) {
    for (int i = 0; from && i < from->childCount(); ++i) {
        QAccessibleInterface* const child = from->child(i);
        if (!child || child->state().invisible)
            continue;
        visitor(child);
        visit(child, visitor);
    }
}

/// The first visible control with this name, and with this role unless it is NoRole; null when there is none.
inline QAccessibleInterface* find(QAccessibleInterface* from, const QString& name,
                                  QAccessible::Role role = QAccessible::NoRole) {
    QAccessibleInterface* found = nullptr;
    visit(from, [&](QAccessibleInterface* control) {
        const bool asked = role == QAccessible::NoRole || control->role() == role;
        if (!found && asked && control->text(QAccessible::Name) == name)
            found = control;
    });
    return found;
}

inline QAccessibleInterface* find(QWindow* window, const QString& name,
                                  QAccessible::Role role = QAccessible::NoRole) {
    return find(QAccessible::queryAccessibleInterface(window), name, role);
}

/// The names of all controls with this role, from left to right and from top to bottom.
inline QStringList names(QAccessibleInterface* from, QAccessible::Role role) {
    QList<std::pair<QPoint, QString>> placed;
    visit(from, [&](QAccessibleInterface* control) {
        if (control->role() == role)
            placed.append({control->rect().topLeft(), control->text(QAccessible::Name)});
    });
    std::stable_sort(placed.begin(), placed.end(), [](const auto& one, const auto& other) {
        return std::pair(one.first.y(), one.first.x()) < std::pair(other.first.y(), other.first.x());
    });
    QStringList texts;
    for (const auto& [place, text] : placed)
        texts.append(text);
    return texts;
}

inline QStringList names(QWindow* window, QAccessible::Role role) {
    return names(QAccessible::queryAccessibleInterface(window), role);
}

/// The names of the selected rows.
inline QStringList chosen(QWindow* window) {
    QStringList texts;
    visit(QAccessible::queryAccessibleInterface(window), [&texts](QAccessibleInterface* control) {
        if (control->role() == QAccessible::ListItem && control->state().selected)
            texts.append(control->text(QAccessible::Name));
    });
    return texts;
}

/// The name of the control with the keyboard focus.
inline QString focus(QWindow* window) {
    const QAccessibleInterface* const there = QAccessible::queryAccessibleInterface(window)->focusChild();
    return there ? there->text(QAccessible::Name) : QString();
}

/// Presses a button as a screen reader does.
inline bool press(QAccessibleInterface* control) {
    if (!control || !control->actionInterface())
        return false;
    control->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    return true;
}

/// Presses the first button with this name.
inline bool press(QWindow* window, const QString& name) {
    return press(find(window, name, QAccessible::Button));
}
} // namespace heard
