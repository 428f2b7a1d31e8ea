#include "Updates/UpdateController.h"

#import <Sparkle/Sparkle.h>

// Feed and key stand in the bundle's Info.plist. Sparkle checks, downloads and notifies by itself.
struct UpdateController::Native {
    SPUStandardUpdaterController* updaterController = nil;
};

UpdateController::UpdateController(const QString& /*feed*/, const QString& /*currentVersion*/,
                                   QNetworkAccessManager& /*network*/, QObject* parent)
    : QObject(parent), m_native(std::make_unique<Native>()) {
    m_native->updaterController = [[SPUStandardUpdaterController alloc] initWithStartingUpdater:YES
                                                                                updaterDelegate:nil
                                                                             userDriverDelegate:nil];
    SPUUpdater* const updater = [m_native->updaterController updater];
    [updater setAutomaticallyChecksForUpdates:YES];
    [updater setAutomaticallyDownloadsUpdates:YES];
}

UpdateController::~UpdateController() = default;

void UpdateController::checkForUpdates() {
    [m_native->updaterController checkForUpdates:nil];
}
