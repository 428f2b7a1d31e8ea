#include "SignIn/CallbackRequest.h"
#include "SignIn/OAuthError.h"
#include "SignIn/TokenResponse.h"
#include "System/ServerAddress.h"

#include <QTest>

using Parameters = QHash<QString, QString>;

class TestSignInRules : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void requests_data() {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<Parameters>("parameters");
        const auto row = [](const char* name, const QByteArray& request, const Parameters& parameters) {
            QTest::newRow(name) << request << parameters;
        };
        const QString code = QStringLiteral("code");
        const QString state = QStringLiteral("state");
        row("usual", "GET /callback?code=abc&state=x-_y HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n",
            {{code, QStringLiteral("abc")}, {state, QStringLiteral("x-_y")}});
        row("any path", "GET /?code=1 HTTP/1.1\r\n\r\n", {{code, QStringLiteral("1")}});
        row("absolute target", "GET http://h/p?code=1#f HTTP/1.1\r\n\r\n", {{code, QStringLiteral("1")}});
        row("encoded separator belongs to the value", "GET /?code=a%26state%3Db HTTP/1.1\r\n\r\n",
            {{code, QStringLiteral("a&state=b")}});
        row("later duplicate wins, item without value skipped",
            "GET /?code=1&flag&code=2&=3 HTTP/1.1\r\n\r\n",
            {{code, QStringLiteral("2")}, {QString(), QStringLiteral("3")}});
        row("leading empty lines", "\r\n\r\nGET /?code=1 HTTP/1.1\r\n", {{code, QStringLiteral("1")}});
        row("split in the middle", "GET /callback?code=abc&sta", {{code, QStringLiteral("abc")}});
        row("no query", "GET /callback HTTP/1.1\r\n\r\n", {});
        row("no target", "GET\r\n\r\n", {});
        row("not UTF-8", "GET /?code=\xff\xfe HTTP/1.1\r\n\r\n", {});
        row("nothing", "", {});
        row("noise", QByteArray(8192, '%'), {});
    }

    void requests() {
        QFETCH(QByteArray, request);
        QFETCH(Parameters, parameters);
        QCOMPARE(queryOf(request), parameters);
    }

    void brokenEscapesAreSurvived() {
        for (const char* target : {"/?code=%", "/?code=%4", "/?code=%zz", "/?code=%00", "/?%=%"})
            QVERIFY(queryOf(QByteArray("GET ") + target + " HTTP/1.1\r\n\r\n").size() <= 1);
    }

    void formValuesAreEscaped() {
        QCOMPARE(formBody({{QStringLiteral("a"), QStringLiteral("x+y&z=ü /?:")},
                           {QStringLiteral("b"), QString()}}),
                 QByteArray("a=x%2By%26z%3D%C3%BC%20/?:&b="));
    }

    void tokenAnswers_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("failure");
        const QString notJson = QStringLiteral("Token-Austausch fehlgeschlagen: Ungueltige JSON-Antwort.");
        const QString noToken =
            QStringLiteral("Token-Austausch fehlgeschlagen: Kein Access Token in der Antwort.");
        QTest::newRow("html") << QByteArray("<html>") << notJson;
        QTest::newRow("list") << QByteArray("[]") << notJson;
        QTest::newRow("nothing") << QByteArray() << notJson;
        QTest::newRow("no token") << QByteArray("{}") << noToken;
        QTest::newRow("empty token") << QByteArray(R"({"access_token":""})") << noToken;
        QTest::newRow("number") << QByteArray(R"({"access_token":5})") << noToken;
        QTest::newRow("good") << QByteArray(R"({"access_token":"a","refresh_token":5,"id_token":"i"})")
                              << QString();
    }

    void tokenAnswers() {
        QFETCH(QByteArray, body);
        QFETCH(QString, failure);
        try {
            const TokenResponse tokens = TokenResponse::parse(body);
            QCOMPARE(failure, QString());
            QCOMPARE(tokens.accessToken, QStringLiteral("a"));
            QCOMPARE(tokens.refreshToken, std::nullopt);
            QCOMPARE(tokens.idToken, std::optional(QStringLiteral("i")));
        } catch (const OAuthError& error) {
            QCOMPARE(error.description(), failure);
        }
    }

    void claims_data() {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<QString>("sub");
        // Payloads of every length modulo 3, so that each padding occurs.
        for (const char* sub : {"a", "ab", "abc", "ü?>~"}) {
            const QByteArray json = QByteArray("{'sub':'%'}").replace('\'', '"').replace("%", sub);
            QTest::newRow(sub) << QString::fromLatin1(json.toBase64(QByteArray::Base64UrlEncoding |
                                                                    QByteArray::OmitTrailingEquals))
                               << QString::fromUtf8(sub);
        }
        QTest::newRow("not base64") << "%%%" << QString();
        QTest::newRow("not an object") << "W10" << QString();
    }

    void claims() {
        QFETCH(QString, payload);
        QFETCH(QString, sub);
        QCOMPARE(IdentityClaims::read(QStringLiteral("h.%1.s").arg(payload)).sub.value_or(QString()), sub);
        QCOMPARE(IdentityClaims::read(payload).sub, std::nullopt); // one piece only
    }

    void serverAddresses_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("address");
        QTest::newRow("https") << "https://connect.harvellon.example/"
                               << "https://connect.harvellon.example";
        QTest::newRow("with a path") << "https://h.example/staging"
                                     << "https://h.example/staging";
        QTest::newRow("loopback") << "http://127.0.0.1:8080"
                                  << "http://127.0.0.1:8080";
        QTest::newRow("loopback v6") << "http://[::1]:8080"
                                     << "http://[::1]:8080";
        QTest::newRow("plain http") << "http://h.example"
                                    << "";
        QTest::newRow("loopback as a prefix") << "http://127.0.0.1.h.example"
                                              << "";
        QTest::newRow("loopback as a user") << "http://127.0.0.1@h.example"
                                            << "";
        QTest::newRow("other scheme") << "ftp://127.0.0.1"
                                      << "";
        QTest::newRow("query") << "https://h.example/?x=1"
                               << "";
        QTest::newRow("nothing") << ""
                                 << "";
    }

    void serverAddresses() {
        QFETCH(QString, text);
        QFETCH(QString, address);
        const ServerAddress checked = ServerAddress::checked(text);
        QCOMPARE(checked.address, address);
        QCOMPARE(checked.problem.isEmpty(), !address.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSignInRules)
#include "tst_signin_rules.moc"
