#include "BrowserTab/AccessibleDocuments.h"
#include "BrowserTab/FrontTab.h"
#include "BrowserTab/Profiles.h"
#include "BrowserTab/ScreenWindows.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

#include <cstdio>

// harvellon-browser-tab prints the address of the tab that the user sees in Google Chrome or Chromium and
// exits with 0; otherwise it says on standard error, in the user's language, why not, and exits with 1.

namespace {
constexpr unsigned long betweenReadings = 400; // milliseconds
constexpr int readings = 9;                    // Chrome writes down what has changed within three seconds

int fail(const QString& reason) {
    std::fprintf(stderr, "%s\n", qUtf8Printable(reason));
    return EXIT_FAILURE;
}

int print(const QString& address) {
    std::printf("%s\n", qUtf8Printable(address));
    return EXIT_SUCCESS;
}

int readSessions(const QList<RunningBrowser>& browsers, const QList<ScreenWindow>& screen) {
    SessionTab tab;
    for (int reading = 0; reading < readings; ++reading) {
        if (reading > 0)
            QThread::msleep(betweenReadings);
        tab = tabInSessions(browsers, screen);
        if (tab.isCurrent)
            break;
    }
    return tab.address.isEmpty() ? fail(tab.problem) : print(tab.address);
}
} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const QList<ScreenWindow> screen = screenWindows();
    const QString offered = offeredAddress(accessibleDocuments(), screen);
    if (!offered.isEmpty())
        return print(offered);
    const QList<RunningBrowser> browsers = runningBrowsers(
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation), QDir::homePath());
    if (browsers.isEmpty())
        return fail(QStringLiteral("Google Chrome läuft nicht."));
    return readSessions(browsers, screen);
}
