#include "Desktop/AppVersion.h"
#include "Desktop/Native/NativeDesktop.h"
#include "Desktop/SceneGraph.h"
#include "HarvellonMountApp.h"
#include "System/Logging.h"
#include "System/Native/SystemLog.h"
#include "System/SingleInstance.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QPixmap>
#include <QTranslator>

#include <cstdio>

int main(int argc, char* argv[]) {
    if (!hasScreen()) {
        std::fputs("Harvellon Connect braucht einen grafischen Desktop.\n", stderr);
        return EXIT_FAILURE;
    }
    installSystemLog();
    chooseSceneGraph();
    // Qt on macOS would bring the program to the front at its start, over what the user does after signing
    // in.
    qputenv("QT_MAC_DISABLE_FOREGROUND_APPLICATION_TRANSFORM", "1");
    // Newer versions of Qt give it to the desktop's portal, which takes it only before any other call.
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication::setQuitOnLastWindowClosed(false);
    const QApplication application(argc, argv);
    becomeAccessory();
    QApplication::setApplicationName(QStringLiteral("HarvellonConnect"));
    QApplication::setApplicationDisplayName(QStringLiteral("Harvellon Connect"));
    QApplication::setOrganizationDomain(QStringLiteral("harvellon.com"));
    QApplication::setApplicationVersion(QStringLiteral(HARVELLON_VERSION));
    // A pixmap with a named format: an icon that is given a file loads every plugin for pictures.
    QApplication::setWindowIcon(QPixmap(QStringLiteral(":/icons/AppIcon.png"), "PNG"));

    // Qt's own network error texts appear in German, like all others.
    QTranslator german;
    const QString texts = QStringLiteral("qtbase_de");
    if (german.load(texts, QLibraryInfo::path(QLibraryInfo::TranslationsPath)) ||
        german.load(texts, QStringLiteral(":/translations"))) // in a bundle for macOS
        QApplication::installTranslator(&german);

    const HostSystem host = HostSystem::current();
    SingleInstance instance(host);
    if (!instance.claim())
        return EXIT_SUCCESS;
    keepVolumesClean();
    const ManagedSettings managed = ManagedSettings::read(host);
    HarvellonMountApp app(
        host, managed, managed.server(QStringLiteral(HARVELLON_SERVER)),
        {QStringLiteral(HARVELLON_UPDATE_FEED), HARVELLON_FEED_KEY, QStringLiteral(HARVELLON_VERSION),
         managed.allowsUpdates()},
        appVersionText(QStringLiteral(HARVELLON_VERSION), QStringLiteral(HARVELLON_BUILD_NUMBER)));
    instance.requests().setHandler([&app](const Request& request) { return app.answer(request); });
    return QApplication::exec();
}
