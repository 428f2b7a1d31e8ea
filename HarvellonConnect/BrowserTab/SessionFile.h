#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// A browser window and the page that its active tab shows.
struct SavedWindow {
    QString title; ///< of the page
    QString address;
    bool isLastActive = false; ///< the window that had the focus last

    bool operator==(const SavedWindow&) const = default;
};

/// The open windows in the session file of a Chrome profile, oldest first; windows without a page are left
/// out. Chrome appends to the file, so an incomplete record at its end is ignored. Nothing for another kind
/// of file or an unknown version.
std::optional<QList<SavedWindow>> windowsIn(const QByteArray& sessionFile);
