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

/// The open windows that the session file of a Chrome profile tells of, oldest first; windows without a page
/// are left out. The file is a log that Chrome appends to: a torn tail is not there yet and is ignored.
/// Nothing when it is not such a file or of a version that is not known.
std::optional<QList<SavedWindow>> windowsIn(const QByteArray& sessionFile);
