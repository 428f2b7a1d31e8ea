#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

struct HostSystem;
struct Project;

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
/// For a program that is to end while data is being written to mounts.
Guidance quitGuidance(const QStringList& domains, const std::function<void()>& wait,
                      const std::function<void()>& quit);
/// For a project whose document folder is a link that only the server can follow; `follow` mounts it anew.
Guidance linkGuidance(const Project& project, const std::function<void()>& follow);
