#pragma once

class QImage;
class QString;
class QWindow;

// Services of the desktop's window system. An operation that a desktop does not need does nothing there. Main
// thread.

/// Whether there is a display to show windows on. Check it before creating the application object, which
/// aborts without a display.
[[nodiscard]] bool hasScreen();

/// Removes the Dock icon and the main menu: the program lives in the menu bar. Call it after creating the
/// application object.
void becomeAccessory();

/// Whether a menu bar or tray for status items is running now. Waits for the session bus for at most 200
/// milliseconds.
[[nodiscard]] bool trayIsPresent();

/// Brings the program to the front: windows of a program without a Dock icon open behind others.
void activateApplication();

/// Lets `window` appear in every space, also beside full-screen windows. Creates its native window if it has
/// none.
void showInEverySpace(QWindow& window);

/// Stops Finder from writing .DS_Store files to network and USB volumes. A mounted site would get one in each
/// folder that Finder opens.
void keepVolumesClean();

/// The desktop's own symbol of this name, black on transparent, in a square of `pixels` physical pixels; a
/// null image if there is none.
QImage nativeSymbol(const QString& name, int pixels);
