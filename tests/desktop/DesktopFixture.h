#pragma once

#include "Desktop/Guidance/GuidanceAlerts.h"
#include "Desktop/Panel/PanelWindow.h"
#include "Desktop/QmlViews.h"
#include "Desktop/SceneGraph.h"
#include "Desktop/Settings/SettingsWindowManager.h"
#include "Desktop/StatusItem/StatusBarController.h"
#include "State/AppState.h"
#include "System/Async.h"
#include "System/Preferences.h"
#include "sandbox/Sandbox.h"
#include "support/Await.h"
#include "support/DesktopShell.h"

#include <QAccessible>
#include <QApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// The whole desktop part on a real state, against the embedded platform.
class DesktopFixture {
  public:
    explicit DesktopFixture(const QString& server, const QString& sshfs = {}, const QVariantMap& fixed = {}) {
        host = HostSystem::linuxDesktop(home.path());
        host.preferencesFile = home.filePath(QStringLiteral("preferences.ini"));
        host.temporaryFolder = home.path();
        host.usesKeyring = false;
        host.gitEnvironment = HostSystem::environmentOfGit(home.path());
        host.permissionPages = HostSystem::macOS(home.path()).permissionPages;
        if (!sshfs.isEmpty())
            host.sshfsCandidates = {sshfs};
        keychain = std::make_shared<KeychainStore>(host);
        preferences = std::make_unique<Preferences>(host.preferencesFile, fixed);
        shell.browser = [this](const QString& address) {
            if (address.startsWith(QLatin1String("http://127.0.0.1")))
                network.get(QNetworkRequest(QUrl(address + QStringLiteral("&identity=") + identity)));
        };
        DesktopCommands commands;
        commands.togglePanel = [this] { statusBar->toggle(); };
        commands.copyText = [this](const QString& text) { copied = text; };
        commands.tellMountsEnded = [](const QStringList&) {};
        state = std::make_unique<AppState>(
            AppServices{host, ServerAddress::checked(server), shell, keychain, *preferences, network},
            commands);
        // Controls tell more once they know that assistive technology runs.
        if (qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON") &&
            !QTest::qWaitFor(QAccessible::isActive, 20000))
            qFatal("no bus of assistive technology");
        statusBar = std::make_unique<StatusBarController>(views, QStringLiteral("1.0.0 (42)"));
        settings = std::make_unique<SettingsWindowManager>(views, *statusBar, QStringLiteral("1.0.0 (42)"));
        alerts = std::make_unique<GuidanceAlerts>(views, *state);
        statusBar->install(*state);
        // Nobody is signed in at first; the start-up is over when that is known.
        const auto known = [this] { return state->connectionStatus() == ConnectionStatus::Case::failure; };
        if (!QTest::qWaitFor([&] { return known() && !state->isLoading(); }))
            qFatal("the state does not start");
    }

    ~DesktopFixture() {
        await(state->shutDown());
        // The state outlives what it has under way, as in the program, where the event loop ends first.
        if (!QTest::qWaitFor([this] { return !state->isLoading(); }))
            qWarning("a load does not end");
        // What the windows ask of other programs is over, or rests, when nothing runs a few times in a row.
        int calm = 0;
        const auto rests = [&] {
            const bool busy = shell.running > 0 || Async::workers().activeThreadCount() > 0;
            calm = busy ? 0 : calm + 1;
            return calm > 3;
        };
        if (!QTest::qWaitFor(rests))
            qWarning("a command does not end");
        alerts.reset();
        settings.reset();
        statusBar.reset();
    }

    Q_DISABLE_COPY_MOVE(DesktopFixture)

    void signIn(const char* who) {
        identity = QString::fromLatin1(who);
        await(state->parts().accounts.addAccount());
        QTRY_VERIFY(!state->isLoading());
    }

    PanelWindow* openPanel() {
        statusBar->show();
        PanelWindow* const window = &statusBar->panel();
        if (!QTest::qWaitForWindowActive(window))
            qWarning("the panel does not become active");
        return window;
    }

    QTemporaryDir home;
    HostSystem host;
    QmlViews views;
    DesktopShell shell;
    QNetworkAccessManager network;
    QString identity; ///< whom the browser chooses
    QString copied;
    std::shared_ptr<KeychainStore> keychain;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<AppState> state;
    std::unique_ptr<StatusBarController> statusBar;
    std::unique_ptr<SettingsWindowManager> settings;
    std::unique_ptr<GuidanceAlerts> alerts;
};

/// A test with a new desktop for each function.
class DesktopTest : public QObject {
    Q_OBJECT

  public:
    explicit DesktopTest(bool withSsh) : m_withSsh(withSsh) { QAccessible::setActive(true); }

  protected:
    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<DesktopFixture> m_desktop;

    PanelWindow* openSignedIn(const char* who = "erika") {
        m_desktop->signIn(who);
        PanelWindow* const window = m_desktop->openPanel();
        m_desktop->shell.opened.clear();
        return window;
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform =
            std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, m_withSsh});
        if (m_withSsh)
            qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
    }

    void init() { m_desktop = std::make_unique<DesktopFixture>(m_platform->server()); }

    void cleanup() {
        m_platform->setFault(sandbox::Sandbox::Endpoint::token, {});
        m_desktop.reset();
    }

  private:
    bool m_withSsh;
};

template <typename Test>
int runOnDesktop(int argc, char* argv[]) {
    chooseSceneGraph(); // as the program does: the other one compiles shaders on the main thread
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
