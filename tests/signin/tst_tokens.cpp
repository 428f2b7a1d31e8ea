#include "LoginFixture.h"

#include "support/Keyring.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// The newest tokens stay in use and stored, whatever is slow, refused or fails.
class TestTokens : public LoginFixture {
    Q_OBJECT

    Keyring m_keyring;

    QString renewalFailure() {
        try {
            await(m_oauth->renewTokens(m_oauth->accessToken().value_or(QString())));
        } catch (const OAuthError& error) {
            return error.description();
        } catch (const NetworkError&) {
            return u"network"_s;
        }
        return u"none"_s;
    }

    void inUseAndStored(const sandbox::IssuedTokens& tokens) {
        QCOMPARE(m_oauth->accessToken(), std::optional(tokens.accessToken));
        QCOMPARE(m_oauth->refreshToken(), std::optional(tokens.refreshToken));
        QCOMPARE(stored("-access-token"), std::optional(tokens.accessToken.toUtf8()));
        QCOMPARE(stored("-refresh-token"), std::optional(tokens.refreshToken.toUtf8()));
    }

  private Q_SLOTS:

    void theEndWaitsForARenewalUntilItIsStored() {
        signIn();
        const auto before = m_oauth->refreshToken();
        const auto renewal = slowRenewal();
        await(m_oauth->finish(std::chrono::milliseconds(50)));
        QVERIFY(!m_oauth->isIdle());
        await(m_oauth->finish(std::chrono::seconds(10)));
        QVERIFY(m_oauth->isIdle() && m_oauth->refreshToken() != before);
        inUseAndStored({*m_oauth->accessToken(), *m_oauth->refreshToken(), {}});
    }

    void noRenewalStartsAtTheEnd() {
        signIn();
        const auto refresh = m_oauth->refreshToken();
        await(m_oauth->finish(std::chrono::seconds(1)));
        QCOMPARE(renewalFailure(), u"network"_s);
        QCOMPARE(m_platform->requests(tokenPath).size(), 0);
        QCOMPARE(m_oauth->refreshToken(), refresh);
    }

    void failedExchangeIsLoggedWithoutSecrets_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("logged");
        const QByteArray longText(1020, 'x');
        QTest::newRow("secrets") << QByteArray(R"(c/1= c%2f1%3d c\/1= c/1%3D verifier-1)")
                                 << u"*** *** *** *** ***"_s;
        QTest::newRow("escaped secrets")
            << QByteArray(R"(c\u002F1\u003d c\/1\u003D c/1\u00)") << u"*** *** c/1\\u00"_s;
        QTest::newRow("controls") << QByteArray("a\r\nb\x1b[1m") << u"a\ufffd\ufffdb\ufffd[1m"_s;
        QTest::newRow("emoji") << QByteArray("a\xF0\x9F\x98\x80\n") << u"a\U0001F600\ufffd"_s;
        QTest::newRow("no text") << QByteArray("abc\xff") << QString();
        QTest::newRow("secret at the end") << longText + "verifier-1" << QString(1020, u'x') + u"***"_s;
        QTest::newRow("cut character") << longText + "abc\xc3\xa4" << QString(1020, u'x') + u"abc"_s;
    }

    void failedExchangeIsLoggedWithoutSecrets() {
        QFETCH(QByteArray, body);
        QFETCH(QString, logged);
        m_platform->setFault(Endpoint::token, {.status = 400, .body = body});
        TokenEndpoint endpoint(m_platform->server() + QString::fromLatin1(tokenPath), m_network,
                               std::chrono::seconds(5));
        const QString line = u"Token-Exchange fehlgeschlagen: HTTP 400 - "_s + logged;
        QTest::ignoreMessage(QtCriticalMsg, qPrintable(line));
        QVERIFY_THROWS_EXCEPTION(OAuthError, await(endpoint.exchange(u"c/1="_s, u"r"_s, u"verifier-1"_s)));
        try {
            await(endpoint.exchange(u"c/1="_s, u"r"_s, QString()));
            QFAIL("sent");
        } catch (const OAuthError& error) {
            QCOMPARE(error.description(), u"Token-Austausch fehlgeschlagen: Code Verifier fehlt."_s);
        }
    }

    void refusedRenewalForgetsTheTokens() {
        qsizetype requests = 0;
        for (const int status : {400, 302}) {
            signIn();
            m_platform->setFault(Endpoint::token, {.status = status});
            const QString failure = u"Token-Erneuerung fehlgeschlagen: HTTP %1"_s.arg(status);
            auto first = m_oauth->renewTokens(*m_oauth->accessToken());
            QCOMPARE(renewalFailure(), failure); // overlaps, and shares the outcome
            QVERIFY_THROWS_EXCEPTION(OAuthError, await(std::move(first)));
            QCOMPARE(m_platform->requests(tokenPath).size(), ++requests);
            QCOMPARE(m_oauth->accessToken(), std::nullopt);
            QCOMPARE(stored("-access-token"), std::nullopt);
            QCOMPARE(stored("-refresh-token"), std::nullopt);
        }
    }

    void unclearAnswersChangeNothing() {
        signIn();
        m_platform->setFault(Endpoint::token, {.body = "<html>"});
        QCOMPARE(renewalFailure(), u"Token-Austausch fehlgeschlagen: Ungueltige JSON-Antwort."_s);
        const auto refresh = m_oauth->refreshToken();
        for (const char* answer :
             {R"({"access_token":"neu","refresh_token":""})", R"({"access_token":"neu"})"}) {
            m_platform->setFault(Endpoint::token, {.body = answer});
            QCOMPARE(renewalFailure(), u"none"_s);
            QCOMPARE(m_oauth->refreshToken(), refresh); // the old one is kept
            QCOMPARE(stored("-refresh-token"), std::optional(refresh->toUtf8()));
        }
        m_platform.reset();
        QCOMPARE(renewalFailure(), u"network"_s);
        QCOMPARE(stored("-access-token"), std::optional(QByteArray("neu")));
    }

    void switchDuringRenewalKeepsTheAccountsApart() {
        signIn();
        const sandbox::IssuedTokens other = m_platform->signIn(u"jonas"_s);
        auto first = slowRenewal();
        await(m_oauth->saveTokens(other.accessToken, other.refreshToken, u"jonas"_s));
        auto second = m_oauth->renewTokens(other.accessToken);
        await(m_oauth->renewTokens(other.accessToken)); // joins the second, not the first
        await(std::move(second));
        await(std::move(first));
        QCOMPARE(m_platform->requests(tokenPath).size(), 2);
        QVERIFY(m_oauth->accessToken() != std::optional(other.accessToken));
        const auto renewed = m_oauth->accessToken();
        QVERIFY(await(m_oauth->loadTokens(account)));
        QVERIFY(m_oauth->accessToken() != renewed);
    }

    void slowKeyringKeepsTheOrderAndBringsNoOldTokensBack() {
        useKeyring();
        signIn();
        makeManager({}); // the next start
        m_keyring.freeze();
        QCoro::Task<bool> loading = m_oauth->loadTokens(account);
        std::vector<QCoro::Task<bool>> saving;
        sandbox::IssuedTokens tokens;
        for (int i = 0; i < 20; ++i) {
            tokens = m_platform->signIn(u"erika"_s);
            saving.push_back(m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account));
        }
        QTest::qWait(100);
        m_keyring.thaw();
        QVERIFY(await(std::move(loading)));
        for (QCoro::Task<bool>& one : saving)
            QVERIFY(await(std::move(one)));
        inUseAndStored(tokens);
    }

    void lateEndOfARenewalLeavesNewerTokensAlone() {
        for (const int status : {400, 0}) { // refused, renewed
            signIn();
            auto renewal = slowRenewal(status);
            const sandbox::IssuedTokens tokens = signIn();
            await(std::move(renewal));
            inUseAndStored(tokens);
        }
    }

    void removedAccountStaysRemovedWhenItsRenewalEnds() {
        signIn();
        auto renewal = slowRenewal();
        await(m_oauth->removeTokens(account));
        await(std::move(renewal));
        QCOMPARE(m_oauth->accessToken(), std::nullopt);
        QCOMPARE(stored("-access-token"), std::nullopt);
        QCOMPARE(stored("-refresh-token"), std::nullopt);
    }

    void callThatNobodyAwaitsAnyLongerOwnsTheKeyring() {
        useKeyring();
        m_keyring.freeze(); // as one whose dialog is open
        QCoro::Task<bool> saving = m_oauth->saveTokens(u"spät"_s, std::nullopt, account);
        const std::weak_ptr<KeychainStore> keychain = m_keychain;
        m_oauth.reset();
        m_keychain.reset();
        QTest::qWait(50);
        QVERIFY(!keychain.expired());
        m_keyring.thaw();
        QTRY_VERIFY(keychain.expired());
        useKeyring();
        QCOMPARE(stored("-access-token"), std::optional(QByteArray("sp\xc3\xa4t")));
    }

    void tokensOfALockedKeyringAreSavedOnceItIsOpen() {
        useKeyring();
        signIn();
        m_keyring.kill();
        m_keyring.start(true);
        QSignalSpy failed(m_oauth.get(), &OAuthManager::storingFailed);
        const sandbox::IssuedTokens tokens = signIn();
        QCOMPARE(failed.size(), 1);
        QVERIFY(await(m_oauth->loadTokens(account)));
        await(m_oauth->storeUnsaved());
        m_keyring.kill();
        m_keyring.start();
        await(m_oauth->storeUnsaved());
        inUseAndStored(tokens);
    }
};

QTEST_GUILESS_MAIN(TestTokens)
#include "tst_tokens.moc"
