#include "System/Logging.h"

Q_LOGGING_CATEGORY(lcOAuth, "OAuth", QtInfoMsg)
Q_LOGGING_CATEGORY(lcProjectAPI, "ProjectAPI", QtInfoMsg)
Q_LOGGING_CATEGORY(lcKeychain, "Keychain", QtInfoMsg)
Q_LOGGING_CATEGORY(lcSSHFSMounter, "SSHFSMounter", QtInfoMsg)
Q_LOGGING_CATEGORY(lcPreferences, "Preferences", QtInfoMsg)
Q_LOGGING_CATEGORY(lcDesktop, "Desktop", QtInfoMsg)
Q_LOGGING_CATEGORY(lcUpdates, "Updates", QtInfoMsg)
