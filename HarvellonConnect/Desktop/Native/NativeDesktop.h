#pragma once

class QImage;
class QString;
class QWindow;

// What a program without a Dock icon asks of the desktop itself. Where a desktop needs none of it, nothing
// happens. Main thread.

/// False when there is nothing to show windows on. Before the application object is made, which would abort.
[[nodiscard]] bool hasScreen();

/// No Dock icon and no main menu: the program lives in the menu bar. After the application object is made.
void becomeAccessory();

/// Whether the desktop has a bar that takes status items now. Waits for the bar's answer, briefly.
[[nodiscard]] bool barIsThere();

/// Brings the program to the front, whatever is there: windows of a program without a Dock icon open behind
/// others.
void activateApplication();

/// Shows `window` beside full-screen windows, too, in whichever space the user is. It must have a native
/// window.
void showInEverySpace(QWindow& window);

/// The desktop keeps folder settings in a file of its own in every folder it shows; not in network and USB
/// volumes from now on. A mounted site would get one into each folder that Finder opens.
void keepVolumesClean();

/// The desktop's own drawing of a symbol, in black on nothing, as a square of `pixels`; an empty image where
/// there is none of that name.
QImage nativeSymbol(const QString& name, int pixels);
