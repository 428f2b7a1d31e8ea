#include "Updates/UpdateController.h"

#import <Sparkle/Sparkle.h>

// Feed, key and what is automatic at first stand in the bundle's Info.plist; from then on the user's choice counts. Sparkle
// checks, downloads and notifies by itself. Only built when there are a feed and a key; see CMakeLists.txt.
struct UpdateController::Native {
    SPUStandardUpdaterController* updaterController = nil;
};

UpdateController::UpdateController(const UpdateSource& source, Preferences& /*preferences*/,
                                   QNetworkAccessManager& /*network*/, QObject* parent)
    : QObject(parent), m_native(std::make_unique<Native>()) {
    if (source.isAllowed)
        m_native->updaterController = [[SPUStandardUpdaterController alloc] initWithStartingUpdater:YES
                                                                                    updaterDelegate:nil
                                                                                 userDriverDelegate:nil];
}

UpdateController::~UpdateController() = default;

void UpdateController::checkForUpdates() {
    if (m_native->updaterController)
        [m_native->updaterController checkForUpdates:nil];
    else
        Q_EMIT announced(QStringLiteral("Harvellon Connect"), updatesForbidden);
}
