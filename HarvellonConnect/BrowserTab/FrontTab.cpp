#include "BrowserTab/FrontTab.h"

#include <QFile>

#include <algorithm>

namespace {
constexpr qint64 largestSession = 64 * 1024 * 1024;

/// What stands in the window's title for a page, before the browser's name: its address where it has no
/// title.
QString shownTitle(const SavedWindow& window) {
    if (!window.title.isEmpty())
        return window.title + QStringLiteral(" - ");
    QString address = window.address.section(QLatin1String("://"), -1);
    if (address.endsWith(QLatin1Char('/')))
        address.chop(1);
    return address;
}

bool shows(const ScreenWindow& window, const SavedWindow& saved) {
    return window.title.startsWith(shownTitle(saved));
}

/// The topmost window with tabs; nothing where no window is known.
const ScreenWindow* frontOf(const QList<ScreenWindow>& screen) {
    const auto front =
        std::find_if(screen.begin(), screen.end(), [](const ScreenWindow& window) { return !window.isApp; });
    return front == screen.end() ? nullptr : &*front;
}

/// The windows in the session files, those of the file written last first.
QList<SavedWindow> readWindows(const QList<RunningBrowser>& browsers, QString& problem) {
    QList<ProfileSession> sessions;
    for (const RunningBrowser& browser : browsers)
        sessions += sessionsOf(browser);
    std::sort(sessions.begin(), sessions.end(), [](const ProfileSession& left, const ProfileSession& right) {
        return left.written > right.written;
    });
    if (sessions.isEmpty())
        problem = QStringLiteral("Chrome hat noch keine Sitzung gespeichert.");
    QList<SavedWindow> windows;
    for (const ProfileSession& session : sessions) {
        QFile file(session.path);
        if (!file.open(QIODevice::ReadOnly)) {
            problem =
                QStringLiteral("Die Sitzungsdatei von Chrome ist nicht lesbar: %1.").arg(file.errorString());
            continue;
        }
        if (const auto found = windowsIn(file.read(largestSession)))
            windows += *found;
        else
            problem = QStringLiteral("Die Sitzungsdatei von Chrome hat ein unbekanntes Format.");
    }
    return windows;
}
} // namespace

QString offeredAddress(const QList<AccessibleDocument>& documents, const QList<ScreenWindow>& screen) {
    const ScreenWindow* const front = frontOf(screen);
    for (const AccessibleDocument& document : documents) {
        if (front && document.windowTitle.startsWith(front->title)) // which may say more: "(Inkognito)"
            return document.address;
    }
    return documents.size() == 1 && !front ? documents.first().address : QString();
}

SessionTab frontTab(const QList<SavedWindow>& saved, const QList<ScreenWindow>& screen) {
    // Of several that could be meant, the one used last is the likeliest.
    QList<SavedWindow> windows = saved;
    std::stable_partition(windows.begin(), windows.end(),
                          [](const SavedWindow& window) { return window.isLastActive; });
    const ScreenWindow* const front = frontOf(screen);
    if (windows.isEmpty())
        return {{}, QStringLiteral("Chrome zeigt kein Fenster mit einer Seite."), false};
    if (!front)
        return {windows.first().address, {}, true};
    for (const SavedWindow& window : windows) {
        if (shows(*front, window))
            return {window.address, {}, true};
    }
    // A page may change its title before the session file is written. Remove all pairs of windows that match;
    // if one saved window and one screen window are left, they are the same. If more screen windows are left,
    // some are not in the file yet, and nothing can be concluded.
    QList<SavedWindow> left;
    std::copy_if(
        windows.begin(), windows.end(), std::back_inserter(left), [&screen](const SavedWindow& window) {
            return std::none_of(screen.begin(), screen.end(),
                                [&window](const ScreenWindow& other) { return shows(other, window); });
        });
    const auto unsaved = std::count_if(screen.begin(), screen.end(), [&windows](const ScreenWindow& other) {
        return std::none_of(windows.begin(), windows.end(),
                            [&other](const SavedWindow& window) { return shows(other, window); });
    });
    if (left.size() < unsaved)
        return {{},
                QStringLiteral("Das vorderste Chrome-Fenster ist nicht gespeichert; bei Inkognito-Fenstern "
                               "ist das immer so."),
                false};
    return {left.first().address, {}, false};
}

SessionTab tabInSessions(const QList<RunningBrowser>& browsers, const QList<ScreenWindow>& screen) {
    // Of several browsers the one counts whose window is in front, where that is known.
    const ScreenWindow* const front = frontOf(screen);
    const qint64 pid = front ? front->pid : 0;
    QList<RunningBrowser> asked = browsers;
    QList<ScreenWindow> windows = screen;
    const bool known =
        pid != 0 && std::any_of(browsers.begin(), browsers.end(),
                                [pid](const RunningBrowser& browser) { return browser.pid == pid; });
    if (known) {
        asked.removeIf([pid](const RunningBrowser& browser) { return browser.pid != pid; });
        windows.removeIf([pid](const ScreenWindow& window) { return window.pid != pid; });
    }
    QString problem;
    const QList<SavedWindow> saved = readWindows(asked, problem);
    SessionTab tab = frontTab(saved, windows);
    if (saved.isEmpty() && !problem.isEmpty())
        tab.problem = problem;
    return tab;
}
