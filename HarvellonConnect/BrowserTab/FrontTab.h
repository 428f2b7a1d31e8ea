#pragma once

#include "BrowserTab/AccessibleDocuments.h"
#include "BrowserTab/Profiles.h"
#include "BrowserTab/ScreenWindows.h"

#include <QList>
#include <QString>

/// The address of the front window among those that the browsers offer; empty when it cannot be determined.
QString offeredAddress(const QList<AccessibleDocument>& documents, const QList<ScreenWindow>& screen);

/// What the session files say about the front window.
struct SessionTab {
    QString address;        ///< empty when there is none
    QString problem;        ///< why there is none, a sentence for the user
    bool isCurrent = false; ///< the page bears the title that the front window has, as far as that is known
};

/// Reads the newest session files of `browsers`. They are some seconds behind: a tab that is not current now
/// may be so a moment later.
SessionTab tabInSessions(const QList<RunningBrowser>& browsers, const QList<ScreenWindow>& screen);

/// The decision alone: which of the saved windows is in front on the screen.
SessionTab frontTab(const QList<SavedWindow>& saved, const QList<ScreenWindow>& screen);
