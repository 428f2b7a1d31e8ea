#pragma once

#include <QList>
#include <QString>

#include <functional>

struct HostSystem;

/// A button of an alert and what it does.
struct GuidanceButton {
    enum class Action { none, openAddress, copy, openTerminal, call };
    QString label;
    Action action = Action::none;
    QString target;  ///< the address, or the text to copy
    QString logLine; ///< for the activity log after the press; empty for none
    std::function<void()> call{};
};

/// An alert that tells the user how to fix what this program cannot fix by itself.
struct Guidance {
    QString title;
    QString text;
    QList<GuidanceButton> buttons;
};

/// For a desktop where sshfs is not installed.
Guidance setupGuidance(const HostSystem& host);
/// For an installed sshfs that does not start.
Guidance repairGuidance(const HostSystem& host);
