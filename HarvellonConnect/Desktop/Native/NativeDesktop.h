#pragma once

#include <functional>

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

/// Calls `show` whenever the user starts the program while it runs, where the desktop reports that to the
/// running program instead of starting another. Call it once, in the event loop.
void onStartedAgain(std::function<void()> show);

/// Whether a menu bar or tray for status items is running now. Waits for the session bus for at most 200
/// milliseconds.
[[nodiscard]] bool trayIsPresent();

/// Brings the program to the front: windows of a program without a Dock icon open behind others. Call it
/// before showing a window, because the program may be hidden.
void activateApplication();

/// Gives the keyboard back to the program that had it before. Hides all windows of this program.
void giveFocusBack();

/// Lets `window` appear in every space, also beside full-screen windows and in Stage Manager, and take keys
/// even where the system does not activate the program. Creates its native window if it has none. Call it
/// after each change of the window's flags, before the window is shown.
void showInEverySpace(QWindow& window);

/// Stops Finder from writing .DS_Store files to network and USB volumes. A mounted site would get one in each
/// folder that Finder opens.
void keepVolumesClean();

/// The desktop's own symbol of this name, black on transparent, in a square of `pixels` physical pixels; a
/// null image if there is none.
QImage nativeSymbol(const QString& name, int pixels);
