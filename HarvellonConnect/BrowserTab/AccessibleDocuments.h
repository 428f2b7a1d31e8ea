#pragma once

#include <QList>
#include <QString>

/// A page that a browser shows, as read through the accessibility bus.
struct AccessibleDocument {
    QString windowTitle; ///< of the window, with the browser's name behind the page's title
    QString address;
};

/// The pages in front in the windows of Google Chrome and Chromium, one for each. Empty where assistive
/// technology is off or was turned on after the browser had started: the browser offers nothing then. Takes a
/// second at most, whatever the programs on the accessibility bus do.
QList<AccessibleDocument> accessibleDocuments();
