#pragma once

#include <QLoggingCategory>

/// The program's identifier, which is also the subsystem of its lines in the system log.
inline constexpr QLatin1StringView applicationIdentifier("com.harvellon.HarvellonConnect");

// One category for each component that writes to the system log.
Q_DECLARE_LOGGING_CATEGORY(lcOAuth)
Q_DECLARE_LOGGING_CATEGORY(lcProjectAPI)
Q_DECLARE_LOGGING_CATEGORY(lcKeychain)
Q_DECLARE_LOGGING_CATEGORY(lcSSHFSMounter)
Q_DECLARE_LOGGING_CATEGORY(lcPreferences)
Q_DECLARE_LOGGING_CATEGORY(lcDesktop)
Q_DECLARE_LOGGING_CATEGORY(lcUpdates)
