#pragma once

#include <QList>
#include <QString>

/// A browser's window as the X server sees it.
struct ScreenWindow {
    QString title;      ///< of the page, with the browser's name behind it
    qint64 pid = 0;     ///< 0 when unknown
    bool isApp = false; ///< an installed web app, which is no place for tabs
};

/// The windows of Google Chrome and Chromium, the topmost first. Empty without an X server or such a window,
/// as where the browser speaks Wayland.
QList<ScreenWindow> screenWindows();
