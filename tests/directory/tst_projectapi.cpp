#include "Directory/ProjectAPI.h"
#include "System/Network/Http.h"
#include "sandbox/Sandbox.h"

#include "support/Await.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using Endpoint = sandbox::Sandbox::Endpoint;
using Case = ProjectAPIError::Case;

namespace {
const QByteArray path = "/api/json/applications";
} // namespace

class TestProjectAPI : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    QNetworkAccessManager m_network;
    std::unique_ptr<sandbox::Sandbox> m_platform;

    [[nodiscard]] QString endpoint() const { return m_platform->server() + QString::fromLatin1(path); }

    ApplicationsResponse fetch(const QString& address, const QString& token) {
        ProjectAPI api(address, m_network);
        return await(api.fetchApplications(token));
    }

    void fails(const QString& address, const QString& token, const ProjectAPIError& expected) {
        try {
            fetch(address, token);
            QFAIL("answered");
        } catch (const ProjectAPIError& error) {
            QCOMPARE(error.description(), expected.description());
        }
    }

  private Q_SLOTS:

    void init() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_folder.path(), 0, false});
    }

    void cleanup() { m_platform.reset(); }

    void fetchesProfileAndProjects() {
        const QString token = m_platform->signIn(u"erika"_s).accessToken;
        const ApplicationsResponse response = fetch(endpoint(), u"  "_s + token + u'\n');
        QCOMPARE(response.user.name, u"Erika Beispiel"_s);
        QCOMPARE(response.user.allowDatabaseConnect, std::optional(true));
        QCOMPARE(response.projects.size(), 12);
        const QList<sandbox::RecordedRequest> requests = m_platform->requests(path);
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().method, QByteArray("POST"));
        QCOMPARE(requests.first().headers.value("authorization"), QByteArray("Bearer ") + token.toUtf8());
    }

    void asksNothingWithoutTokenOrAddress() {
        fails(u"not an address"_s, u"  \n"_s, ProjectAPIError(Case::missingToken));
        fails(u"http://a b/"_s, u"t"_s, ProjectAPIError(Case::badURL));
        fails(QString(), u"t"_s, ProjectAPIError(Case::badURL));
        QCOMPARE(m_platform->requests(path).size(), 0);
    }

    void misbehaviour_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("requests");
        QTest::newRow("401") << 401 << QByteArray("{}") << int(Case::unauthorized) << 1;
        QTest::newRow("405 to both") << 405 << QByteArray("{}") << int(Case::badResponse) << 2;
        QTest::newRow("500") << 500 << QByteArray(1000, 'x') << int(Case::badResponse) << 1;
    }

    void misbehaviour() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(int, error);
        QFETCH(int, requests);
        m_platform->setFault(Endpoint::directory, {.status = status, .body = body});
        const QString logged = u"API POST %1 -> HTTP %2: "_s.arg(endpoint()).arg(status);
        QTest::ignoreMessage(QtCriticalMsg, qPrintable(logged + QString::fromLatin1(body.left(200))));
        fails(endpoint(), u"t"_s, ProjectAPIError(Case(error), status));
        QCOMPARE(m_platform->requests(path).size(), requests);
    }

    void refusedMethodLeadsToOneGet() {
        m_platform->setFault(Endpoint::directory, {.refusePost = true});
        const QString token = m_platform->signIn(u"jonas"_s).accessToken;
        QCOMPARE(fetch(endpoint(), token).user.name, u"Jonas Muster"_s);
        QCOMPARE(m_platform->requests(path).last().method, QByteArray("GET"));
    }

    void redirectTakesTheTokenNowhere() {
        QTemporaryDir otherFolder;
        const sandbox::Sandbox other({otherFolder.path(), 0, false});
        const QByteArray address = other.server().toUtf8() + path;
        m_platform->setFault(Endpoint::directory, {.status = 302, .location = address});
        fails(endpoint(), u"t"_s, ProjectAPIError(Case::badResponse, 302));
        QCOMPARE(other.requests(path).size(), 0);
    }

    void dripsEndAfterFifteenSeconds() {
        m_platform->setFault(Endpoint::directory,
                             {.body = QByteArray(1000, ' '), .drip = std::chrono::milliseconds(100)});
        QElapsedTimer timer;
        timer.start();
        QVERIFY_THROWS_EXCEPTION(NetworkError, fetch(endpoint(), u"t"_s));
        QVERIFY(timer.elapsed() >= 14900);
    }
};

QTEST_GUILESS_MAIN(TestProjectAPI)
#include "tst_projectapi.moc"
