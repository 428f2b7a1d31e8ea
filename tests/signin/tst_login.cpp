#include "SignIn/OAuthManager.h"
#include "sandbox/Sandbox.h"

#include "support/Await.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrlQuery>

using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;

namespace {
const QByteArray tokenPath = "/oauth/token";
const QString account = QStringLiteral("8f14e45f-erika");

HostSystem hostIn(const QString& folder) {
    HostSystem host = HostSystem::linuxDesktop(folder);
    host.usesKeyring = false;
    return host;
}

QString valueIn(const QUrl& url, const QString& name) {
    return QUrlQuery(url).queryItemValue(name, QUrl::FullyDecoded);
}
} // namespace

/// Everything from the first click to renewed tokens, against the sandbox.
class TestLogin : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<KeychainStore> m_keychain;
    std::unique_ptr<OAuthManager> m_oauth;
    QNetworkAccessManager m_network;
    std::function<void(QUrl)> m_browser;

    /// A browser that has chosen `parameters` on the sign-in page.
    void browse(const QUrl& address, const QString& parameters) {
        QNetworkRequest request(QUrl(address.toString(QUrl::FullyEncoded) + parameters));
        connect(m_network.get(request), &QNetworkReply::finished, this, [] {});
    }

    /// A request straight to the listener; returns all that it answers.
    static QByteArray callBack(const QUrl& address, const QByteArray& target) {
        const QUrl redirect(valueIn(address, QStringLiteral("redirect_uri")));
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(redirect.port()));
        socket.write("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QByteArray answer;
        QElapsedTimer timer;
        timer.start();
        while (socket.state() != QAbstractSocket::UnconnectedState && timer.elapsed() < 3000) {
            QTest::qWait(5);
            answer += socket.readAll();
        }
        return answer + socket.readAll();
    }

    QString loginFailure() {
        try {
            await(m_oauth->startLogin());
        } catch (const OAuthError& error) {
            return error.description();
        } catch (const NetworkError& error) {
            return error.description();
        }
        return QStringLiteral("none");
    }

    QString renewalFailure() {
        try {
            await(m_oauth->renewTokens(m_oauth->accessToken().value_or(QString())));
        } catch (const OAuthError& error) {
            return error.description();
        } catch (const NetworkError&) {
            return QStringLiteral("network");
        }
        return QStringLiteral("none");
    }

    void signIn() {
        const sandbox::IssuedTokens tokens = m_platform->signIn(QStringLiteral("erika"));
        await(m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account));
    }

    [[nodiscard]] std::optional<QByteArray> stored(const char* item) {
        return m_keychain->load(QStringLiteral("com.harvellon.HarvellonConnect.oauth"),
                                account + QString::fromLatin1(item));
    }

  private Q_SLOTS:

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_folder->path(), 0, false});
        m_keychain = std::make_unique<KeychainStore>(hostIn(m_folder->path()));
        m_oauth =
            std::make_unique<OAuthManager>(ServerAddress::checked(m_platform->server()), m_network,
                                           *m_keychain, [this](const QUrl& address) { m_browser(address); });
    }

    void cleanup() {
        m_oauth.reset();
        m_platform.reset();
    }

    void loginYieldsTokensAndWhoTheyBelongTo() {
        QUrl asked;
        m_browser = [this, &asked](const QUrl& address) {
            asked = address;
            browse(address, QStringLiteral("&identity=erika"));
        };
        const AuthResult result = await(m_oauth->startLogin());
        QCOMPARE(result.accountID, std::optional(account));
        QCOMPARE(result.email, std::optional(QStringLiteral("erika@beispiel-shop.example")));
        QCOMPARE(result.displayName, std::optional(QStringLiteral("Erika Beispiel")));
        QVERIFY(result.refreshToken.has_value());
        QCOMPARE(m_oauth->accessToken(), std::optional(result.accessToken));
        QVERIFY(!m_oauth->isAuthenticating());
        QVERIFY(
            asked.query(QUrl::FullyEncoded)
                .startsWith(QStringLiteral("client_id=018f4c2a-7b3d-7e91-a5c6-2d8e0f1b3a47&redirect_uri=")));
        QCOMPARE(valueIn(asked, QStringLiteral("scope")), QStringLiteral("openid profile email"));
        QCOMPARE(valueIn(asked, QStringLiteral("state")).size(), 43);
        QVERIFY(!stored("-access-token")); // storing is the caller's step
    }

    void badCallbacks_data() {
        QTest::addColumn<QByteArray>("target"); // %S stands for the right state
        QTest::addColumn<QString>("failure");
        const QString state =
            QStringLiteral("Sicherheitspruefung fehlgeschlagen (State stimmt nicht ueberein).");
        const QString code = QStringLiteral("Kein Authorization Code vom Server erhalten.");
        QTest::newRow("wrong state") << QByteArray("/callback?code=abc&state=WRONG") << state;
        QTest::newRow("no query") << QByteArray("/callback") << state;
        QTest::newRow("refused by the user") << QByteArray("/callback?error=access_denied&state=%S") << code;
        QTest::newRow("empty code") << QByteArray("/x?code=&state=%S") << code;
        QTest::newRow("invented code") << QByteArray("/any/path?code=abc&state=%S")
                                       << QStringLiteral("Token-Austausch fehlgeschlagen: HTTP 400");
    }

    void badCallbacks() {
        QFETCH(QByteArray, target);
        QFETCH(QString, failure);
        QByteArray answer;
        QUrl asked;
        m_browser = [&](const QUrl& address) {
            asked = address;
            target.replace("%S", valueIn(address, QStringLiteral("state")).toUtf8());
            QTimer::singleShot(0, this, [&] { answer = callBack(asked, target); });
        };
        QCOMPARE(loginFailure(), failure);
        QTRY_VERIFY(answer.contains("Login erfolgreich")); // the tab shows the page in any case
        QVERIFY(answer.endsWith("</html>\n"));
        QVERIFY(!m_oauth->isAuthenticating());
        QCOMPARE(m_oauth->authError(), std::optional(failure));
        QCOMPARE(callBack(asked, target), QByteArray()); // the port is closed
    }

    void secondLoginIsRefusedAndLeavesTheFirstAlone() {
        QUrl asked;
        m_browser = [&asked](const QUrl& address) { asked = address; };
        auto first = m_oauth->startLogin();
        QTRY_VERIFY(!asked.isEmpty());
        QCOMPARE(loginFailure(), QStringLiteral("Login laeuft bereits."));
        QVERIFY(m_oauth->isAuthenticating());
        browse(asked, QStringLiteral("&identity=jonas"));
        QCOMPARE(await(std::move(first)).displayName, std::optional(QStringLiteral("Jonas Muster")));
    }

    void connectionsWithoutDataCountForNothing() {
        QTcpSocket early;
        m_browser = [&](const QUrl& address) {
            early.connectToHost(
                QHostAddress::LocalHost,
                static_cast<quint16>(QUrl(valueIn(address, QStringLiteral("redirect_uri"))).port()));
            connect(&early, &QTcpSocket::connected, this, [this, address, &early] {
                early.disconnectFromHost();
                browse(address, QStringLiteral("&identity=erika"));
            });
        };
        QCOMPARE(await(m_oauth->startLogin()).accountID, std::optional(account));
    }

    void cancelledLoginEndsAtOnce() {
        m_browser = [this](const QUrl&) {
            QTimer::singleShot(10, m_oauth.get(), &OAuthManager::cancelLogin);
        };
        QCOMPARE(loginFailure(), QStringLiteral("Callback-Server fehlgeschlagen: Listener abgebrochen."));
    }

    void realBrowserShowsTheWholePage() {
        const QString chromium = QStringLiteral("/usr/bin/chromium");
        QProcess browser;
        QTemporaryDir profile;
        m_browser = [&](const QUrl& address) {
            browser.start(chromium,
                          {QStringLiteral("--headless"), QStringLiteral("--no-sandbox"),
                           QStringLiteral("--disable-gpu"), QStringLiteral("--no-first-run"),
                           QStringLiteral("--disable-background-networking"),
                           QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                           QStringLiteral("--password-store=basic"),
                           QStringLiteral("--user-data-dir=") + profile.path(), QStringLiteral("--dump-dom"),
                           address.toString(QUrl::FullyEncoded) + QStringLiteral("&identity=erika")});
        };
        QCOMPARE(await(m_oauth->startLogin()).accountID, std::optional(account));
        QTRY_COMPARE_WITH_TIMEOUT(browser.state(), QProcess::NotRunning, 20000);
        const QString page = QString::fromUtf8(browser.readAllStandardOutput());
        for (const char* text : {"Login erfolgreich", "Du bist jetzt mit Harvellon Connect verbunden.",
                                 "Authentifiziert", "Du kannst diesen Tab jetzt schliessen."})
            QVERIFY2(page.contains(QString::fromUtf8(text)), text);
    }

    void renewalRotatesAndStores() {
        signIn();
        const auto before = m_oauth->refreshToken();
        m_platform->expireTokens();
        QCOMPARE(renewalFailure(), QStringLiteral("none"));
        QVERIFY(m_oauth->refreshToken() != before);
        QCOMPARE(stored("-access-token"), std::optional(m_oauth->accessToken()->toUtf8()));
        QCOMPARE(stored("-refresh-token"), std::optional(m_oauth->refreshToken()->toUtf8()));
    }

    void overlappingRenewalsAreOne() {
        signIn();
        const QString refused = *m_oauth->accessToken();
        Fault slow;
        slow.delay = std::chrono::milliseconds(200);
        m_platform->setFault(Endpoint::token, slow);
        auto first = m_oauth->renewTokens(refused);
        auto second = m_oauth->renewTokens(refused);
        await(std::move(first));
        await(std::move(second));
        await(m_oauth->renewTokens(refused)); // too late: already replaced
        QCOMPARE(m_platform->requests(tokenPath).size(), 1);
        QVERIFY(m_oauth->accessToken().has_value());
    }

    void refusedRenewalForgetsTheTokens_data() {
        QTest::addColumn<int>("status");
        QTest::newRow("refused") << 400;
        QTest::newRow("server error") << 500;
        QTest::newRow("redirect") << 302;
    }

    void refusedRenewalForgetsTheTokens() {
        QFETCH(int, status);
        signIn();
        Fault fault;
        fault.status = status;
        m_platform->setFault(Endpoint::token, fault);
        QCOMPARE(renewalFailure(), QStringLiteral("Token-Erneuerung fehlgeschlagen: HTTP %1").arg(status));
        QCOMPARE(m_oauth->accessToken(), std::nullopt);
        QCOMPARE(stored("-access-token"), std::nullopt);
        QCOMPARE(stored("-refresh-token"), std::nullopt);
    }

    void unclearAnswersChangeNothing() {
        signIn();
        const auto access = m_oauth->accessToken();
        Fault fault;
        fault.body = "<html>";
        m_platform->setFault(Endpoint::token, fault);
        QCOMPARE(renewalFailure(),
                 QStringLiteral("Token-Austausch fehlgeschlagen: Ungueltige JSON-Antwort."));
        fault.body = R"({"access_token":"neu"})";
        m_platform->setFault(Endpoint::token, fault);
        const auto refresh = m_oauth->refreshToken();
        QCOMPARE(renewalFailure(), QStringLiteral("none"));
        QCOMPARE(m_oauth->refreshToken(), refresh); // the old one is kept
        QCOMPARE(stored("-refresh-token"), std::optional(refresh->toUtf8()));
        m_platform.reset();
        QCOMPARE(renewalFailure(), QStringLiteral("network"));
        QCOMPARE(stored("-access-token"), std::optional(QByteArray("neu")));
        QVERIFY(access != m_oauth->accessToken());
    }

    void switchDuringRenewalKeepsTheAccountsApart() {
        signIn();
        const sandbox::IssuedTokens other = m_platform->signIn(QStringLiteral("jonas"));
        Fault slow;
        slow.delay = std::chrono::milliseconds(200);
        m_platform->setFault(Endpoint::token, slow);
        auto renewal = m_oauth->renewTokens(*m_oauth->accessToken());
        await(m_oauth->saveTokens(other.accessToken, other.refreshToken, QStringLiteral("jonas")));
        await(std::move(renewal));
        QCOMPARE(m_oauth->accessToken(), std::optional(other.accessToken));
        QVERIFY(stored("-access-token") != std::optional(other.accessToken.toUtf8()));
        QVERIFY(await(m_oauth->loadTokens(account)));
        QVERIFY(m_platform->requests(tokenPath).size() == 1);
    }

    void silenceOfTwoMinutesEndsTheLogin() {
        QUrl asked;
        m_browser = [&asked](const QUrl& address) { asked = address; };
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(loginFailure(), QStringLiteral("Login-Timeout: Keine Antwort vom Browser erhalten."));
        QVERIFY(timer.elapsed() >= 119000);
        QCOMPARE(callBack(asked, "/callback"), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestLogin)
#include "tst_login.moc"
