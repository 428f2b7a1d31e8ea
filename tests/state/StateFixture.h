#pragma once

#include "State/AppState.h"
#include "System/Preferences.h"
#include "sandbox/Sandbox.h"
#include "support/Await.h"
#include "support/DesktopShell.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTest>

using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;
using Status = ConnectionStatus::Case;

/// The state with real services against the embedded platform, made anew for each test.
class StateFixture : public QObject {
    Q_OBJECT

  protected:
    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QByteArray m_searchPath;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<DesktopShell> m_shell;
    std::shared_ptr<KeychainStore> m_keychain;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<AppState> m_state;
    QString m_identity; ///< whom the browser chooses
    QStringList m_ended;
    QString m_copied;

    [[nodiscard]] HostSystem host() const {
        HostSystem host = HostSystem::linuxDesktop(m_home->path());
        host.preferencesFile = m_home->filePath(QStringLiteral("preferences.ini"));
        host.temporaryFolder = m_home->path();
        host.usesKeyring = false;
        host.gitEnvironment = HostSystem::environmentOfGit(m_home->path());
        return host;
    }

    void start() { start(host()); }

    void start(const HostSystem& host) {
        m_state.reset();
        m_keychain = std::make_shared<KeychainStore>(host);
        m_preferences = std::make_unique<Preferences>(host.preferencesFile);
        DesktopCommands desktop;
        desktop.togglePanel = [] {};
        desktop.copyText = [this](const QString& text) { m_copied = text; };
        desktop.tellMountsEnded = [this](const QStringList& domains) { m_ended += domains; };
        m_state = std::make_unique<AppState>(AppServices{host, ServerAddress::checked(m_platform->server()),
                                                         *m_shell, m_keychain, *m_preferences, *m_network},
                                             desktop);
        QTRY_VERIFY(m_state->connectionStatus() == Status::success ||
                    m_state->connectionStatus() == Status::failure);
        QTRY_VERIFY(!m_state->isLoading());
    }

    void signIn(const char* identity) {
        m_identity = QString::fromLatin1(identity);
        await(m_state->parts().accounts.addAccount());
    }

    [[nodiscard]] QStringList messages() const {
        QStringList texts;
        for (const ActivityLogEntry& entry : m_state->activityLog()->entries())
            texts.append(entry.message);
        return texts;
    }

    void answer(Endpoint endpoint, int status, std::chrono::milliseconds delay = {}) {
        Fault fault;
        fault.status = status;
        fault.delay = delay;
        m_platform->setFault(endpoint, fault);
    }

    void load() { await(m_state->parts().loading.refresh()); }

    void connectTo(const Project& project) { await(m_state->parts().connections.connect(project)); }

    void connectTo(int index) {
        connectTo(project(index));
        QVERIFY(m_state->connectedDomains().contains(project(index).domain));
    }

    void disconnectFrom(int index) { await(m_state->parts().connections.disconnect(domain(index), false)); }

    void perform(HoverTarget target, const Project& project) {
        await(m_state->parts().actions.perform(target, project, false));
    }

    [[nodiscard]] QString domain(int index) const {
        return m_platform->people().at(0).projects.at(index).domain;
    }

    [[nodiscard]] QString mountPoint(int index) const {
        return m_home->path() + QStringLiteral("/Harvellon/") + domain(index);
    }

    static QByteArray content(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    [[nodiscard]] Project project(int index) const {
        for (const Project& project : m_state->projects()) {
            if (project.domain == domain(index))
                return project;
        }
        qFatal("no such project");
    }

  protected Q_SLOTS:

    void initTestCase() {
        m_searchPath = qgetenv("PATH");
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + m_searchPath);
    }

    void init() {
        m_home = std::make_unique<QTemporaryDir>();
        m_network = std::make_unique<QNetworkAccessManager>();
        m_shell = std::make_unique<DesktopShell>();
        m_shell->browser = [this](const QString& address) {
            if (address.startsWith(QLatin1String("http://127.0.0.1")))
                m_network->get(QNetworkRequest(QUrl(address + QStringLiteral("&identity=") + m_identity)));
        };
        m_ended.clear();
        start();
    }

    void cleanup() {
        for (const Endpoint endpoint : {Endpoint::directory, Endpoint::token, Endpoint::site})
            m_platform->setFault(endpoint, {});
        m_platform->ssh().acceptKey(true);
        m_platform->ssh().thaw();
        if (m_state)
            await(m_state->shutDown());
        m_state.reset();
    }

    void cleanupTestCase() {
        m_platform.reset();
        qputenv("PATH", m_searchPath);
    }
};
