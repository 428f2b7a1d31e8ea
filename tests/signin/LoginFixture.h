#pragma once

#include "SignIn/OAuthManager.h"
#include "sandbox/Sandbox.h"

#include "support/Await.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

using Endpoint = sandbox::Sandbox::Endpoint;

inline const QString account = QStringLiteral("8f14e45f-erika");

inline HostSystem hostIn(const QString& folder) {
    HostSystem host = HostSystem::linuxDesktop(folder);
    host.usesKeyring = false;
    return host;
}

/// A sign-in manager against the sandbox, made anew for each test.
class LoginFixture : public QObject {
    Q_OBJECT

  protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::shared_ptr<KeychainStore> m_keychain;
    std::unique_ptr<OAuthManager> m_oauth;
    QNetworkAccessManager m_network;
    std::function<void(QUrl)> m_browser;

    /// Tokens go into the desktop's keyring from now on.
    void useKeyring() {
        HostSystem host = hostIn(m_folder->path());
        host.usesKeyring = true;
        m_keychain = std::make_shared<KeychainStore>(host);
        makeManager({});
    }

    void makeManager(OAuthLimits limits) {
        m_oauth = std::make_unique<OAuthManager>(
            ServerAddress::checked(m_platform->server()), m_network, m_keychain,
            [this](const QUrl& address) { m_browser(address); }, limits);
    }

    sandbox::IssuedTokens signIn() {
        const sandbox::IssuedTokens tokens = m_platform->signIn(QStringLiteral("erika"));
        await(m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account));
        return tokens;
    }

    /// Begins a renewal that takes a while, and ends with `status` where it is not 0.
    QCoro::Task<> slowRenewal(int status = 0) {
        m_platform->setFault(Endpoint::token, {.status = status, .delay = std::chrono::milliseconds(200)});
        return m_oauth->renewTokens(*m_oauth->accessToken());
    }

    [[nodiscard]] std::optional<QByteArray> stored(const char* item) {
        return m_keychain->load(QStringLiteral("com.harvellon.HarvellonConnect.oauth"),
                                account + QString::fromLatin1(item));
    }

  private Q_SLOTS:

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_folder->path(), 0, false});
        m_keychain = std::make_shared<KeychainStore>(hostIn(m_folder->path()));
        makeManager({});
    }

    void cleanup() {
        m_oauth.reset();
        m_platform.reset();
    }
};
