#include "Directory/ProjectAPI.h"
#include "System/Network/Http.h"
#include "sandbox/Sandbox.h"

#include "support/Await.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;
using Case = ProjectAPIError::Case;

namespace {
const QByteArray path = "/api/json/applications";
constexpr qsizetype nothing = 0;
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
        QCOMPARE(requests.first().headers.value("accept"), QByteArray("application/json"));
        QCOMPARE(requests.first().headers.value("content-type"), QByteArray("application/json"));
        QCOMPARE(requests.first().body, QByteArray());
    }

    void asksNothingWithoutTokenOrAddress() {
        fails(u"not an address"_s, u"  \n"_s, ProjectAPIError(Case::missingToken));
        fails(u"http://a b/"_s, u"t"_s, ProjectAPIError(Case::badURL));
        fails(QString(), u"t"_s, ProjectAPIError(Case::badURL));
        QCOMPARE(m_platform->requests(path).size(), nothing);
    }

    void misbehaviour_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("requests");
        QTest::newRow("401") << 401 << QByteArray("{}") << int(Case::unauthorized) << 1;
        QTest::newRow("403") << 403 << QByteArray("{}") << int(Case::unauthorized) << 1;
        QTest::newRow("405 to both") << 405 << QByteArray("{}") << int(Case::badResponse) << 2;
        QTest::newRow("500") << 500 << QByteArray(1000, 'x') << int(Case::badResponse) << 1;
        QTest::newRow("html") << 200 << QByteArray("<html>") << int(Case::decodeFailed) << 1;
    }

    void misbehaviour() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(int, error);
        QFETCH(int, requests);
        Fault fault;
        fault.status = status;
        fault.body = body;
        m_platform->setFault(Endpoint::directory, fault);
        if (status == 500)
            QTest::ignoreMessage(QtCriticalMsg, qPrintable(u"API POST %1 -> HTTP 500: %2"_s.arg(
                                                    endpoint(), QString(200, u'x'))));
        fails(endpoint(), u"t"_s, ProjectAPIError(Case(error), status));
        QCOMPARE(m_platform->requests(path).size(), requests);
    }

    void refusedMethodLeadsToOneGet() {
        Fault fault;
        fault.refusePost = true;
        m_platform->setFault(Endpoint::directory, fault);
        const QString token = m_platform->signIn(u"jonas"_s).accessToken;
        QCOMPARE(fetch(endpoint(), token).user.name, u"Jonas Muster"_s);
        QCOMPARE(m_platform->requests(path).last().method, QByteArray("GET"));
    }

    void redirectTakesTheTokenNowhere() {
        QTemporaryDir otherFolder;
        const sandbox::Sandbox other({otherFolder.path(), 0, false});
        Fault fault;
        fault.status = 302;
        fault.location = (other.server() + QString::fromLatin1(path)).toUtf8();
        m_platform->setFault(Endpoint::directory, fault);
        fails(endpoint(), u"t"_s, ProjectAPIError(Case::badResponse, 302));
        QCOMPARE(other.requests(path).size(), nothing);
    }

    void noConnectionIsANetworkError() {
        const QString address = endpoint();
        m_platform.reset();
        QVERIFY_THROWS_EXCEPTION(NetworkError, fetch(address, u"t"_s));
    }

    void dripsEndAfterFifteenSeconds() {
        Fault fault;
        fault.body = QByteArray(1000, ' ');
        fault.drip = std::chrono::milliseconds(100);
        m_platform->setFault(Endpoint::directory, fault);
        QElapsedTimer timer;
        timer.start();
        QVERIFY_THROWS_EXCEPTION(NetworkError, fetch(endpoint(), u"t"_s));
        QVERIFY(timer.elapsed() >= 14900);
    }
};

QTEST_GUILESS_MAIN(TestProjectAPI)
#include "tst_projectapi.moc"
