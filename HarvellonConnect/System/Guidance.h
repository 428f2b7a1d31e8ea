#pragma once

#include <QList>
#include <QString>

/// A button of an alert and what it does.
struct GuidanceButton {
    enum class Action { none, openAddress, copy, openTerminal };
    QString label;
    Action action = Action::none;
    QString target; ///< the address, or the text to copy
    QString told;   ///< the activity log's line afterwards; empty for none
};

/// An alert that helps the user out of a condition that the program cannot mend.
struct Guidance {
    QString title;
    QString text;
    QList<GuidanceButton> buttons;
};

/// For a desktop without sshfs, and for an sshfs that does not start.
Guidance setupGuidanceMacOS();
Guidance repairGuidanceMacOS();

/// `osRelease`: the text of /etc/os-release, which tells how packages are installed here.
Guidance setupGuidanceLinux(const QString& osRelease);
Guidance repairGuidanceLinux(const QString& osRelease);
