#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// A line of a file that holds what was sought.
struct SearchHit {
    QString path; ///< below the local mount; invalid and control characters are replaced
    qint64 line = 0;
    QString text; ///< cut to 400 characters, without control and format characters

    /// "path:line:text", as terminals and editors open it. A colon in the path is replaced, because the path
    /// would seem to end there.
    [[nodiscard]] QString asLine() const;

    bool operator==(const SearchHit&) const = default;
};

/// What a search has found.
struct SearchHits {
    QList<SearchHit> hits;
    bool more = false;       ///< there are more than are listed
    bool incomplete = false; ///< not all files were searched: some were unreadable, or the time was over
};

/// The hits in what grep has printed with a NUL behind each name, names beginning with "./". `folder` is the
/// local folder that stands for ".". Whatever is no such hit is left out: a name that leads out of the
/// folder, a line that was cut off. Any thread.
[[nodiscard]] SearchHits hitsIn(const QByteArray& output, const QString& folder, qsizetype mostHits = 1000);
