#include "HarvellonMountApp.h"

#include "Desktop/Native/NativeDesktop.h"

#include <QClipboard>
#include <QEventLoop>
#include <QFileOpenEvent>
#include <QGuiApplication>
#include <QSessionManager>
#include <QTimer>

namespace {
constexpr std::chrono::seconds longestEnd{5};
}

HarvellonMountApp::HarvellonMountApp(const HostSystem& host, const ManagedSettings& managed,
                                     const ServerAddress& server, const UpdateSource& updates,
                                     const QString& versionText)
    : m_keychain(std::make_shared<KeychainStore>(host)), m_preferences(host.preferencesFile, managed.values),
      m_state({host, server, m_shell, m_keychain, m_preferences, m_network},
              {[this] { m_statusBar.toggle(); },
               [](const QString& text) { QGuiApplication::clipboard()->setText(text); },
               [this](const QStringList& domains) { m_statusBar.notifyMountsEnded(domains); }}),
      m_statusBar(m_views, versionText), m_settings(m_views, m_statusBar, versionText),
      m_alerts(m_views, m_state),
      m_commands(m_state,
                 {[this] { m_statusBar.show(); }, [this] { m_statusBar.toggle(); },
                  [this](const QString& domain) {
                      if (m_statusBar.isShown()) // and not closed while the list was loading
                          m_statusBar.showProject(domain);
                  }},
                 versionText),
      m_updates(updates, m_preferences, m_network) {
    connect(&m_statusBar, &StatusBarController::settingsRequested, this,
            [this] { m_settings.show(m_state); });
    connect(&m_statusBar, &StatusBarController::quitRequested, this, [this] {
        m_statusBar.close();
        m_state.parts().care.askToQuit([this] { quit(); });
    });
    connect(&m_statusBar, &StatusBarController::updatesRequested, this, [this] {
        activateApplication();
        m_updates.checkForUpdates();
    });
    connect(&m_updates, &UpdateController::announced, &m_statusBar, &StatusBarController::notify);
    connect(&m_signals, &TerminationSignals::received, this, &HarvellonMountApp::quit);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, &HarvellonMountApp::quit,
            Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::aboutToQuit, this, &HarvellonMountApp::finishBeforeLoopEnds);
    for (const QString& problem : managed.problems)
        m_state.parts().report.log(problem, ActivityLogLevel::warning);
    m_statusBar.install(m_state);
    qGuiApp->installEventFilter(this);
}

bool HarvellonMountApp::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::FileOpen)
        return QObject::eventFilter(watched, event);
    m_commands.follow(static_cast<QFileOpenEvent*>(event)->url().toString());
    return true;
}

void HarvellonMountApp::quit() {
    if (m_quitting)
        return;
    m_quitting = true;
    m_statusBar.close();
    shutDown();
}

QCoro::Task<> HarvellonMountApp::shutDown() {
    co_await m_state.shutDown();
    m_shutDown = true;
    Q_EMIT everythingEnded();
    QCoreApplication::quit();
}

/// Somebody else may end the event loop, a session manager for one: the mounts and the tokens get their time
/// even then.
void HarvellonMountApp::finishBeforeLoopEnds() {
    if (m_shutDown || (m_state.isIdle()))
        return;
    QEventLoop loop;
    QTimer::singleShot(longestEnd, &loop, &QEventLoop::quit);
    connect(this, &HarvellonMountApp::everythingEnded, &loop, &QEventLoop::quit);
    quit();
    loop.exec();
}
