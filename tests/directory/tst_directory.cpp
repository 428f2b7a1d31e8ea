#include "Directory/Account.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/DecodingError.h"
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

/// JSON in C++ is easier to read with single quotes.
QByteArray json(const char* text) {
    return QByteArray(text).replace('\'', '"');
}

QByteArray answerWith(const QByteArray& project) {
    return json("{'user':{'name':'Erika'},'projects':[") + project + "]}";
}

const std::optional<QString> none;
} // namespace

Q_DECLARE_METATYPE(Project)

/// The list of projects: how it is asked for, and how it is read.
class TestDirectory : public QObject {
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
        QCOMPARE(m_platform->requests(path).size(), 0);
    }

    void misbehaviour_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("requests");
        QTest::newRow("401") << 401 << int(Case::unauthorized) << 1;
        QTest::newRow("405 to both") << 405 << int(Case::badResponse) << 2;
        QTest::newRow("500") << 500 << int(Case::badResponse) << 1;
    }

    void misbehaviour() {
        QFETCH(int, status);
        QFETCH(int, error);
        QFETCH(int, requests);
        m_platform->setFault(Endpoint::directory, {.status = status, .body = QByteArray(1000, 'x')});
        const QString logged = u"API POST %1 -> HTTP %2: "_s.arg(endpoint()).arg(status);
        QTest::ignoreMessage(QtCriticalMsg, qPrintable(logged + QString(200, u'x')));
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

    void projects_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<Project>("project");
        const auto row = [](const char* name, const char* members, const Project& project) {
            QTest::newRow(name) << json("{'domain':'d.example',") + json(members) + '}' << project;
        };
        const auto plain = [](const QString& webspace, const QString& path = u"/"_s) {
            return Project{u"d.example"_s, none, webspace, path, ProjectType::harvellon};
        };
        row("least", "'webspace_id':12", plain(u"12"_s));
        row("trimmed and lowered", "'ispconfig_webspace':7,'path':'  web ','type':' SSH\\n','name':'N'",
            {u"d.example"_s, u"N"_s, u"7"_s, u"/web"_s, ProjectType::ssh});
        row("first identifier wins", "'webspace_id':1,'ispconfig_webspace':2", plain(u"1"_s));
        row("fraction falls to the second", "'webspace_id':1.5,'ispconfig_webspace':9", plain(u"9"_s));
        row("beyond doubles", "'webspace_id':9007199254740993", plain(u"9007199254740993"_s));
        row("ill-typed trifles", "'webspace_id':1,'name':5,'path':[],'type':5", plain(u"1"_s));
        row("path stays", "'webspace_id':1,'path':'//a//','type':'ftp'", plain(u"1"_s, u"//a//"_s));
    }

    void projects() {
        QFETCH(QByteArray, text);
        QFETCH(Project, project);
        QCOMPARE(ApplicationsResponse::decode(answerWith(text)).projects, QList{project});
    }

    void refused_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("path");
        QTest::newRow("no domain") << answerWith(json("{'webspace_id':1}")) << u"domain"_s;
        QTest::newRow("text as identifier")
            << answerWith(json("{'domain':'d','webspace_id':'12'}")) << u"ispconfig_webspace"_s;
        QTest::newRow("identifier beyond 64 bits")
            << answerWith(json("{'domain':'d','webspace_id':99999999999999999999}"))
            << u"ispconfig_webspace"_s;
        QTest::newRow("coder as text")
            << (json("{'user':{'name':'E','coder':'ja'},'projects':[]}")) << u"coder"_s;
        QTest::newRow("no projects") << (json("{'user':{'name':'E'}}")) << u"projects"_s;
        QTest::newRow("project is a number") << answerWith("5") << u"projects"_s;
    }

    void refused() {
        QFETCH(QByteArray, text);
        QFETCH(QString, path);
        try {
            ApplicationsResponse::decode(text);
            QFAIL("decoded");
        } catch (const DecodingError& error) {
            QCOMPARE(error.path(), path);
            if (path == "ispconfig_webspace"_L1)
                QCOMPARE(error.description(), u"Webspace-ID fehlt"_s);
        }
    }

    void accountsSurviveARoundTrip() {
        const QList<Account> accounts{{u"1"_s, u"ü@x.example"_s, u"\"Ü\""_s}, {u"2"_s, none, u"Zwei"_s}};
        const QByteArray encoded = encodeAccounts(accounts);
        QVERIFY(!encoded.contains("null"));
        QCOMPARE(decodeAccounts(encoded), accounts);
        QVERIFY_THROWS_EXCEPTION(DecodingError, decodeAccounts(json("[{'id':'1','email':null}]")));
        QCOMPARE(decodeAccounts(json("[{'id':'1','email':null,'displayName':'A'}]")).value(0).email, none);
    }
};

QTEST_GUILESS_MAIN(TestDirectory)
#include "tst_directory.moc"
