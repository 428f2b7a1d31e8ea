#include "sandbox/Sandbox.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>

using Fields = QMap<QString, QString>;
using namespace Qt::StringLiterals;

namespace {
const QString callback = u"http://127.0.0.1:4567/callback"_s;
const QString verifier = u"a-verifier-that-nobody-guesses-0123456789-0123"_s;
const QByteArray directoryPath = "/api/json/applications";

QByteArray form(const Fields& fields) {
    QUrlQuery query;
    for (auto field = fields.begin(); field != fields.end(); ++field)
        query.addQueryItem(field.key(), QString::fromLatin1(QUrl::toPercentEncoding(field.value())));
    return query.toString(QUrl::FullyEncoded).toUtf8();
}

Fields authorization() {
    const QByteArray hash = QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256);
    return {{u"client_id"_s, u"018f4c2a-7b3d-7e91-a5c6-2d8e0f1b3a47"_s},
            {u"redirect_uri"_s, callback},
            {u"response_type"_s, u"code"_s},
            {u"scope"_s, u"openid profile email"_s},
            {u"state"_s, u"s+t/\"><script>&=ä"_s},
            {u"code_challenge"_s, QString::fromLatin1(hash.toBase64(QByteArray::Base64UrlEncoding |
                                                                    QByteArray::OmitTrailingEquals))},
            {u"code_challenge_method"_s, u"S256"_s}};
}

struct Answer {
    int status = 0;
    QByteArray body;
    QByteArray type;
    QUrl location;

    [[nodiscard]] QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }

    [[nodiscard]] QString text(const char* name) const {
        return json().value(QLatin1String(name)).toString();
    }
};
} // namespace

/// The identity server and the directory, asked over HTTP as any client does.
class TestSandboxWeb : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QNetworkAccessManager m_network;

    void restart() {
        m_platform.reset();
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_folder->path(), 0, false});
    }

    Answer ask(const QByteArray& method, const QByteArray& target, const QByteArray& body = {},
               const QByteArray& type = "application/x-www-form-urlencoded", const QByteArray& bearer = {}) {
        QNetworkRequest request(QUrl::fromEncoded(m_platform->server().toUtf8() + target));
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        request.setRawHeader("Content-Type", type);
        if (!bearer.isEmpty())
            request.setRawHeader("Authorization", "Bearer " + bearer);
        const std::unique_ptr<QNetworkReply> reply(m_network.sendCustomRequest(request, method, body));
        [[maybe_unused]] const bool finished =
            QTest::qWaitFor([&reply] { return reply->isFinished(); }, 20000);
        return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply->readAll(),
                reply->rawHeader("Content-Type"), QUrl::fromEncoded(reply->rawHeader("Location"))};
    }

    Answer authorize(const Fields& fields) { return ask("GET", "/oauth/authorize?" + form(fields)); }

    Answer token(const Fields& fields) { return ask("POST", "/oauth/token", form(fields)); }

    Answer directory(const QString& token) {
        return ask("POST", directoryPath, {}, "application/json", token.toUtf8());
    }

    Answer refresh(const QString& token) {
        return this->token({{u"grant_type"_s, u"refresh_token"_s},
                            {u"client_id"_s, authorization().value(u"client_id"_s)},
                            {u"refresh_token"_s, token}});
    }

    /// The fields that redeem a fresh code.
    Fields redemption() {
        Fields fields = authorization();
        fields.insert(u"identity"_s, u"erika"_s);
        const QUrlQuery query(authorize(fields).location);
        return {{u"grant_type"_s, u"authorization_code"_s},
                {u"client_id"_s, fields.value(u"client_id"_s)},
                {u"redirect_uri"_s, callback},
                {u"code"_s, query.queryItemValue(u"code"_s, QUrl::FullyDecoded)},
                {u"code_verifier"_s, verifier}};
    }

  private Q_SLOTS:

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        restart();
    }

    void cleanup() { m_platform.reset(); }

    void codeYieldsTokensOnce() {
        const Fields fields = redemption();
        const Answer answer = token(fields);
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.text("token_type"), u"Bearer"_s);
        const QByteArray claims = QByteArray::fromBase64(
            answer.text("id_token").split(u'.').value(1).toUtf8(), QByteArray::Base64UrlEncoding);
        QCOMPARE(QJsonDocument::fromJson(claims).object().value(u"email"_s).toString(),
                 u"erika@beispiel-shop.example"_s);
        QCOMPARE(directory(answer.text("access_token")).status, 200);
        QCOMPARE(token(fields).status, 400);
    }

    void codeIsBoundToItsRequest_data() {
        QTest::addColumn<QString>("field");
        QTest::newRow("verifier") << u"code_verifier"_s;
        QTest::newRow("redirect") << u"redirect_uri"_s;
        QTest::newRow("client") << u"client_id"_s;
        QTest::newRow("code") << u"code"_s;
        QTest::newRow("grant") << u"grant_type"_s;
    }

    void codeIsBoundToItsRequest() {
        QFETCH(QString, field);
        Fields fields = redemption();
        fields.insert(field, u"other"_s);
        const Answer answer = token(fields);
        QCOMPARE(answer.status, 400);
        QCOMPARE(answer.text("error"), u"invalid_grant"_s);
        fields = redemption();
        const QString honest = fields.value(u"code_verifier"_s);
        fields.insert(u"code_verifier"_s, u"guessed"_s);
        QCOMPARE(token(fields).status, 400);
        fields.insert(u"code_verifier"_s, honest); // one guess uses the code up
        QCOMPARE(token(fields).status, 400);
    }

    void secondUseOfARefreshTokenRevokesItsGrantOnly() {
        const sandbox::IssuedTokens other = m_platform->signIn(u"erika"_s);
        const sandbox::IssuedTokens first = m_platform->signIn(u"erika"_s);
        const Answer renewed = refresh(first.refreshToken);
        QCOMPARE(renewed.status, 200);
        QCOMPARE(directory(first.accessToken).status, 401);
        QCOMPARE(directory(renewed.text("access_token")).status, 200);
        QCOMPARE(refresh(first.refreshToken).text("error"), u"invalid_grant"_s);
        QCOMPARE(directory(renewed.text("access_token")).status, 401);
        QCOMPARE(refresh(renewed.text("refresh_token")).status, 400);
        QCOMPARE(directory(other.accessToken).status, 200);
        QCOMPARE(refresh(other.refreshToken).status, 200);
    }
};

QTEST_GUILESS_MAIN(TestSandboxWeb)
#include "tst_sandbox_web.moc"
