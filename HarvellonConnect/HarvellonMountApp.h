#pragma once

#include "CommandLine/CommandService.h"
#include "Desktop/Guidance/GuidanceAlerts.h"
#include "Desktop/QmlViews.h"
#include "Desktop/Settings/SettingsWindowManager.h"
#include "Desktop/StatusItem/StatusBarController.h"
#include "SignIn/Keychain/KeychainStore.h"
#include "State/AppState.h"
#include "System/HostSystem.h"
#include "System/Managed/ManagedSettings.h"
#include "System/Preferences.h"
#include "System/Shell.h"
#include "System/TerminationSignals.h"
#include "Updates/UpdateController.h"

#include <QNetworkAccessManager>
#include <QObject>

/// The application: makes the parts, wires them, and sees to it that they end in order. Main thread.
class HarvellonMountApp : public QObject {
    Q_OBJECT

  public:
    HarvellonMountApp(const HostSystem& host, const ManagedSettings& managed, const ServerAddress& server,
                      const UpdateSource& updates, const QString& versionText);

    /// Takes every mount down and stores what has to be stored, then ends the event loop. Further calls
    /// change nothing.
    void quit();

    /// Fulfils a request of the command line.
    QCoro::Task<Answer> answer(const Request& request) { return m_commands.answer(request); }

    /// Takes the links that the desktop hands to this process.
    bool eventFilter(QObject* watched, QEvent* event) override;

  Q_SIGNALS:
    void everythingEnded();

  private:
    QCoro::Task<> shutDown();
    void finishBeforeLoopEnds();

    QmlViews m_views;
    Shell m_shell;
    std::shared_ptr<KeychainStore> m_keychain;
    Preferences m_preferences;
    QNetworkAccessManager m_network;
    AppState m_state;
    StatusBarController m_statusBar; // shows the state, so it ends before it
    SettingsWindowManager m_settings;
    GuidanceAlerts m_alerts;
    CommandService m_commands;
    UpdateController m_updates;
    TerminationSignals m_signals;
    bool m_quitting = false;
    bool m_shutDown = false;
};
