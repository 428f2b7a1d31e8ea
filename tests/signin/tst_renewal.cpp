#include "LoginFixture.h"

using namespace Qt::StringLiterals;

namespace {
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// Renewing tokens: success, refusal, no answer, overlapping callers.
class TestRenewal : public LoginFixture {
    Q_OBJECT

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

    void signIn() {
        const sandbox::IssuedTokens tokens = m_platform->signIn(u"erika"_s);
        await(m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account));
    }

  private Q_SLOTS:

    void renewalRotatesAndStores() {
        signIn();
        const auto before = m_oauth->refreshToken();
        m_platform->expireTokens();
        QCOMPARE(renewalFailure(), u"none"_s);
        QVERIFY(m_oauth->refreshToken() != before);
        QCOMPARE(stored("-access-token"), std::optional(m_oauth->accessToken()->toUtf8()));
        QCOMPARE(stored("-refresh-token"), std::optional(m_oauth->refreshToken()->toUtf8()));
    }

    void theEndWaitsForARenewalUntilItIsStored() {
        signIn();
        const auto before = m_oauth->refreshToken();
        Fault slow;
        slow.delay = std::chrono::milliseconds(200);
        m_platform->setFault(Endpoint::token, slow);
        const auto renewal = m_oauth->renewTokens(*m_oauth->accessToken());
        await(m_oauth->finish(std::chrono::milliseconds(50)));
        QVERIFY(!m_oauth->isIdle());
        await(m_oauth->finish(std::chrono::seconds(10)));
        QVERIFY(m_oauth->isIdle() && m_oauth->refreshToken() != before);
        QCOMPARE(stored("-refresh-token"), std::optional(m_oauth->refreshToken()->toUtf8()));
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
        QTest::newRow("reason") << QByteArray(R"({"error":"invalid_grant"})")
                                << uR"({"error":"invalid_grant"})"_s;
        QTest::newRow("secrets") << QByteArray(R"(c/1 c%2f1 c\/1 verifier-1 x)") << u"*** *** *** *** x"_s;
        QTest::newRow("controls") << QByteArray("a\r\nb\x1b[1m") << u"a\ufffd\ufffdb\ufffd[1m"_s;
        QTest::newRow("no text") << QByteArray("abc\xff") << QString();
        QTest::newRow("long") << longText + longText << QString(1024, u'x');
        QTest::newRow("secret at the end") << longText + "verifier-1" << QString(1020, u'x') + u"***"_s;
        QTest::newRow("cut character") << longText + "abc\xc3\xa4" << QString(1020, u'x') + u"abc"_s;
    }

    void failedExchangeIsLoggedWithoutSecrets() {
        QFETCH(QByteArray, body);
        QFETCH(QString, logged);
        Fault fault;
        fault.status = 400;
        fault.body = body;
        m_platform->setFault(Endpoint::token, fault);
        TokenEndpoint endpoint(m_platform->server() + QString::fromLatin1(tokenPath), m_network,
                               std::chrono::seconds(5));
        const QString line = u"Token-Exchange fehlgeschlagen: HTTP 400 - "_s + logged;
        QTest::ignoreMessage(QtCriticalMsg, qPrintable(line));
        QVERIFY_THROWS_EXCEPTION(OAuthError, await(endpoint.exchange(u"c/1"_s, u"r"_s, u"verifier-1"_s)));
    }

    void exchangeNeedsItsVerifier() {
        TokenEndpoint endpoint(m_platform->server(), m_network, std::chrono::seconds(5));
        try {
            await(endpoint.exchange(u"code"_s, u"r"_s, QString()));
            QFAIL("exchanged");
        } catch (const OAuthError& error) {
            QCOMPARE(error.description(), u"Token-Austausch fehlgeschlagen: Code Verifier fehlt."_s);
        }
        QVERIFY(m_platform->requests().isEmpty());
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
        const QString failure = u"Token-Erneuerung fehlgeschlagen: HTTP %1"_s.arg(status);
        auto first = m_oauth->renewTokens(*m_oauth->accessToken());
        QCOMPARE(renewalFailure(), failure); // overlaps, and shares the outcome
        QVERIFY_THROWS_EXCEPTION(OAuthError, await(std::move(first)));
        QCOMPARE(m_platform->requests(tokenPath).size(), 1);
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
        QCOMPARE(renewalFailure(), u"Token-Austausch fehlgeschlagen: Ungueltige JSON-Antwort."_s);
        const auto refresh = m_oauth->refreshToken();
        for (const char* answer :
             {R"({"access_token":"neu","refresh_token":""})", R"({"access_token":"neu"})"}) {
            fault.body = answer;
            m_platform->setFault(Endpoint::token, fault);
            QCOMPARE(renewalFailure(), u"none"_s);
            QCOMPARE(m_oauth->refreshToken(), refresh); // the old one is kept
            QCOMPARE(stored("-refresh-token"), std::optional(refresh->toUtf8()));
        }
        m_platform.reset();
        QCOMPARE(renewalFailure(), u"network"_s);
        QCOMPARE(stored("-access-token"), std::optional(QByteArray("neu")));
        QVERIFY(access != m_oauth->accessToken());
    }

    void renewalOfAnOlderPairIsNotJoined_data() {
        QTest::addColumn<QString>("next");
        QTest::newRow("same account") << account;
        QTest::newRow("another account") << u"jonas"_s;
    }

    void renewalOfAnOlderPairIsNotJoined() {
        QFETCH(QString, next);
        signIn();
        const sandbox::IssuedTokens other = m_platform->signIn(u"jonas"_s);
        Fault slow;
        slow.delay = std::chrono::milliseconds(100);
        m_platform->setFault(Endpoint::token, slow);
        auto first = m_oauth->renewTokens(*m_oauth->accessToken());
        await(m_oauth->saveTokens(other.accessToken, other.refreshToken, next));
        auto second = m_oauth->renewTokens(other.accessToken);
        await(m_oauth->renewTokens(other.accessToken)); // joins the second
        await(std::move(second));
        await(std::move(first));
        QCOMPARE(m_platform->requests(tokenPath).size(), 2);
        QVERIFY(m_oauth->accessToken() != std::optional(other.accessToken));
    }

    void switchDuringRenewalKeepsTheAccountsApart() {
        signIn();
        const sandbox::IssuedTokens other = m_platform->signIn(u"jonas"_s);
        Fault slow;
        slow.delay = std::chrono::milliseconds(200);
        m_platform->setFault(Endpoint::token, slow);
        auto renewal = m_oauth->renewTokens(*m_oauth->accessToken());
        await(m_oauth->saveTokens(other.accessToken, other.refreshToken, u"jonas"_s));
        await(std::move(renewal));
        QCOMPARE(m_oauth->accessToken(), std::optional(other.accessToken));
        QVERIFY(stored("-access-token") != std::optional(other.accessToken.toUtf8()));
        QVERIFY(await(m_oauth->loadTokens(account)));
        QVERIFY(m_platform->requests(tokenPath).size() == 1);
    }
};

QTEST_GUILESS_MAIN(TestRenewal)
#include "tst_renewal.moc"
